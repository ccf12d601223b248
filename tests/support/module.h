// The DLLs under test, loaded from this build, and the way to create their objects. The program's thread is a
// single-threaded apartment from main on.
#pragma once

#include <gtest/gtest.h>
#include <objbase.h>
#include <wrl/client.h>

#include <string>

namespace talx::test {

using Microsoft::WRL::ComPtr;

HMODULE engineModule(); // talxrend.dll, loaded for the life of the program
HMODULE imageModule();  // talxstd.dll

inline std::wstring pathOf(HMODULE module) {
    wchar_t path[MAX_PATH] = L"";
    GetModuleFileNameW(module, path, MAX_PATH);
    return path;
}

template <class Function>
Function* exported(HMODULE module, const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

inline HRESULT classObject(HMODULE module, const CLSID& clsid, const IID& iid, void** object) {
    return exported<decltype(DllGetClassObject)>(module, "DllGetClassObject")(clsid, iid, object);
}

// Creates an object through the class object of a module, without the registry; null when that fails.
template <class Interface>
ComPtr<Interface> createObject(HMODULE module, const CLSID& clsid) {
    ComPtr<IClassFactory> factory;
    ComPtr<Interface> object;
    EXPECT_EQ(S_OK, classObject(module, clsid, IID_PPV_ARGS(&factory)));
    EXPECT_EQ(S_OK, factory ? factory->CreateInstance(nullptr, IID_PPV_ARGS(&object)) : E_FAIL);
    return object;
}

} // namespace talx::test
