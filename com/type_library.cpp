// See type_library.h.
#include "com/type_library.h"

#include "com/module_path.h"

#include <oleauto.h>

using Microsoft::WRL::ComPtr;

namespace talx {

namespace {

std::wstring typeLibraryPath(const ComModule& module) {
    return modulePath(module.instance()) + L"\\1"; // resource 1
}

// The function of the automation DLL that works for the current user if that is asked for and there is one,
// else the one for the whole machine. Both take the same arguments.
template <class Function>
Function* registrationFunction(const char* perUserName, Function* machineWide) {
    if (perUserRegistration()) {
        if (const HMODULE automation = GetModuleHandleW(L"OLEAUT32.DLL")) {
            if (const FARPROC perUser = GetProcAddress(automation, perUserName)) {
                return reinterpret_cast<Function*>(reinterpret_cast<void*>(perUser));
            }
        }
    }
    return machineWide;
}

} // namespace

bool perUserRegistration() {
    for (const wchar_t* const runtime : {L"atl110.dll", L"atl100.dll", L"atl90.dll", L"atl.dll"}) {
        const HMODULE loaded = GetModuleHandleW(runtime);
        if (!loaded) {
            continue;
        }
        if (const FARPROC function = GetProcAddress(loaded, "AtlGetPerUserRegistration")) {
            bool enabled = false;
            const auto ask = reinterpret_cast<HRESULT(WINAPI*)(bool*)>(reinterpret_cast<void*>(function));
            if (SUCCEEDED(ask(&enabled)) && enabled) {
                return true;
            }
        }
    }
    return false;
}

ComPtr<ITypeLib> loadTypeLibrary(const ComModule& module) {
    ComPtr<ITypeLib> library;
    const HRESULT hr = LoadTypeLibEx(typeLibraryPath(module).c_str(), REGKIND_NONE, library.GetAddressOf());
    checkMade(hr, library.Get());
    return library;
}

HRESULT registerTypeLibrary(const ComModule& module) {
    const ComPtr<ITypeLib> library = loadTypeLibrary(module);
    std::wstring path = typeLibraryPath(module);
    std::wstring helpFolder = modulePath(module.instance());
    helpFolder.resize(helpFolder.find_last_of(L"\\/:") + 1);
    const auto registerLibrary = registrationFunction("RegisterTypeLibForUser", &RegisterTypeLib);
    return registerLibrary(library.Get(), path.data(), helpFolder.data());
}

HRESULT unregisterTypeLibrary(const ComModule& module) {
    const ComPtr<ITypeLib> library = loadTypeLibrary(module);
    TLIBATTR* attributes = nullptr;
    const HRESULT hr = library->GetLibAttr(&attributes);
    checkMade(hr, attributes);
    const TLIBATTR id = *attributes;
    library->ReleaseTLibAttr(attributes);
    const auto unregisterLibrary = registrationFunction("UnRegisterTypeLibForUser", &UnRegisterTypeLib);
    return unregisterLibrary(id.guid, id.wMajorVerNum, id.wMinorVerNum, id.lcid, id.syskind);
}

} // namespace talx
