// The creatable classes of both DLLs, and the engine's DLL loaded once more.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

namespace talx::test {

struct ServerClass {
    HMODULE (*module)();
    std::wstring name;
    CLSID clsid;

    [[nodiscard]] std::wstring progId() const { return L"Hemlar." + name + L".1"; }
};

inline const ServerClass serverClasses[] = {
    {engineModule, L"TalRenderEngine", __uuidof(TalRenderEngine)},
    {engineModule, L"TalGDIRenderEngine", __uuidof(TalGDIRenderEngine)},
    {imageModule, L"TalImage8Grey", __uuidof(TalImage8Grey)},
    {imageModule, L"TalImageColor", __uuidof(TalImageColor)},
    {imageModule, L"TalImage16Grey", __uuidof(TalImage16Grey)},
    {imageModule, L"TalImage16Range", __uuidof(TalImage16Range)},
};

inline HRESULT call(const char* name, HMODULE module) {
    return exported<HRESULT WINAPI()>(module, name)();
}

// The engine's DLL loaded once more, from a copy of its file: a module with a life of its own.
struct ModuleCopy {
    ~ModuleCopy() {
        EXPECT_EQ(S_OK, call("DllCanUnloadNow", module));
        FreeLibrary(module);
        EXPECT_EQ(nullptr, GetModuleHandleW(path.c_str()));
    }
    const std::wstring folder = L"C:\\it's 'here'", path = folder + L"\\talxrend.dll";
    const BOOL made = CreateDirectoryW(folder.c_str(), nullptr); // but once
    const BOOL copied = CopyFileW(pathOf(engineModule()).c_str(), path.c_str(), FALSE);
    const HMODULE module = LoadLibraryW(path.c_str());
};

} // namespace talx::test
