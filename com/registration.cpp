// See registration.h. The scripts are run by the registrar of the system's own atl.dll.
#include "com/registration.h"

#include "com/module_path.h"
#include "com/type_library.h"

#include <string>

using Microsoft::WRL::ComPtr;

namespace talx {

// The registrar's interface, which MinGW's headers lack. (Not in the unnamed namespace: the compiler would
// take it that no class implements it.)
struct IRegistrar : IUnknown {
    STDMETHOD(AddReplacement)(LPCOLESTR key, LPCOLESTR item) PURE;
    STDMETHOD(ClearReplacements)() PURE;
    STDMETHOD(ResourceRegisterSz)(LPCOLESTR file, LPCOLESTR id, LPCOLESTR type) PURE;
    STDMETHOD(ResourceUnregisterSz)(LPCOLESTR file, LPCOLESTR id, LPCOLESTR type) PURE;
    STDMETHOD(FileRegister)(LPCOLESTR file) PURE;
    STDMETHOD(FileUnregister)(LPCOLESTR file) PURE;
    STDMETHOD(StringRegister)(LPCOLESTR data) PURE;
    STDMETHOD(StringUnregister)(LPCOLESTR data) PURE;
    STDMETHOD(ResourceRegister)(LPCOLESTR file, UINT id, LPCOLESTR type) PURE;
    STDMETHOD(ResourceUnregister)(LPCOLESTR file, UINT id, LPCOLESTR type) PURE;
};

namespace {

constexpr IID iidRegistrar = {0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
constexpr CLSID clsidRegistrar = {
    0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};

std::wstring guidText(const GUID& guid) {
    wchar_t text[40];
    StringFromGUID2(guid, text, static_cast<int>(std::size(text)));
    return text;
}

// A text as it stands between single quotes in a script.
std::wstring quoted(std::wstring text) {
    for (std::size_t at = text.find(L'\''); at != std::wstring::npos; at = text.find(L'\'', at + 2)) {
        text.insert(at, 1, L'\'');
    }
    return text;
}

// COM for the length of a scope, in whichever apartment the thread is or else in one of its own.
class ComScope {
public:
    ComScope() : initialized_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {
        require(initialized_ == RPC_E_CHANGED_MODE, initialized_);
    }
    ~ComScope() {
        if (SUCCEEDED(initialized_)) {
            CoUninitialize();
        }
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    const HRESULT initialized_;
};

// Runs the script of one class, in both directions.
void updateRegistry(const ComModule& module, const ObjectEntry& entry, bool add) {
    ComPtr<IRegistrar> registrar;
    const HRESULT hr = CoCreateInstance(clsidRegistrar, nullptr, CLSCTX_INPROC_SERVER, iidRegistrar,
                                        reinterpret_cast<void**>(registrar.GetAddressOf()));
    checkMade(hr, registrar.Get());
    const std::wstring path = modulePath(module.instance());
    const bool perUser = perUserRegistration();
    const std::pair<const wchar_t*, std::wstring> replacements[] = {
        // The root of the script and what closes it.
        {L"CLASSES", perUser ? L"HKCU { NoRemove Software { NoRemove Classes" : L"HKCR"},
        {L"END_CLASSES", perUser ? L"} }" : L""},
        {L"MODULE", quoted(path)},
        {L"MODULE_RAW", path},
        {L"NAME", entry.name},
        {L"CLSID", guidText(*entry.clsid)},
        {L"LIBID", guidText(module.typeLibrary())},
        {L"THREADING_MODEL", entry.threadingModel},
    };
    for (const auto& [key, item] : replacements) {
        check(registrar->AddReplacement(key, item.c_str()));
    }
    check(add ? registrar->ResourceRegister(path.c_str(), entry.script, L"REGISTRY")
              : registrar->ResourceUnregister(path.c_str(), entry.script, L"REGISTRY"));
}

void updateCategories(const ObjectEntry& entry, bool add) {
    if (entry.categories.empty()) {
        return;
    }
    ComPtr<ICatRegister> categories;
    const HRESULT hr = CoCreateInstance(CLSID_StdComponentCategoriesMgr, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_PPV_ARGS(categories.GetAddressOf()));
    checkMade(hr, categories.Get());
    for (const ComCategoryEntry& category : entry.categories) {
        const auto update = add ? (category.required ? &ICatRegister::RegisterClassReqCategories
                                                     : &ICatRegister::RegisterClassImplCategories)
                                : (category.required ? &ICatRegister::UnRegisterClassReqCategories
                                                     : &ICatRegister::UnRegisterClassImplCategories);
        CATID id = category.category;
        check((categories.Get()->*update)(*entry.clsid, 1, &id));
    }
}

} // namespace

HRESULT registerServer(const ComModule& module) {
    const ComScope com;
    for (const ObjectEntry& entry : module.classes()) {
        updateRegistry(module, entry, true);
        updateCategories(entry, true);
    }
    return registerTypeLibrary(module);
}

HRESULT unregisterServer(const ComModule& module) {
    const ComScope com;
    for (const ObjectEntry& entry : module.classes()) {
        updateCategories(entry, false);
        updateRegistry(module, entry, false);
    }
    return unregisterTypeLibrary(module);
}

} // namespace talx
