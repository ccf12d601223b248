// The apartment, and objects of COM classes: registered, or in a DLL beside the program.
#pragma once

#include "talxrend/failure.h"

#include <objbase.h>

#include <atomic>

namespace talxrend {

// The thread as a single-threaded apartment for the length of a scope. To be the first object of the thread's
// function: everything that COM has made must be gone before it goes.
class Apartment {
public:
    Apartment() { check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "cannot start COM"); }
    ~Apartment() { CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

// A new object of a class that is registered, or named by the program's manifest, or served (see
// ServedClass). what: the start of the failure's text.
template <class Interface>
[[nodiscard]] ComPtr<Interface>
create(const CLSID& clsid, std::string_view what = "cannot create an object; is its DLL registered?") {
    ComPtr<Interface> object;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&object)), what);
    return object;
}

// A COM server DLL that nobody needs to register. Whatever was made of it goes before the Library does, which
// unloads the DLL; one that says it is still in use then stays to the end of the program.
class Library {
public:
    // path: the whole path of the DLL.
    explicit Library(const std::wstring& path)
        : module_(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {
        if (!module_) {
            throw Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot load " + utf8(path));
        }
    }
    // name: of a DLL in the folder of the program.
    [[nodiscard]] static Library besideProgram(const std::wstring& name) {
        std::wstring path(32768, L'\0'); // the longest that there are
        path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
        return Library(path.substr(0, path.find_last_of(L'\\') + 1) + name);
    }
    ~Library() {
        const auto canUnload = exported<HRESULT WINAPI()>("DllCanUnloadNow");
        if (canUnload && canUnload() == S_OK) {
            FreeLibrary(module_);
        }
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    [[nodiscard]] ComPtr<IClassFactory> classObject(const CLSID& clsid) const {
        const auto get = exported<decltype(DllGetClassObject)>("DllGetClassObject");
        ComPtr<IClassFactory> factory;
        check(get ? get(clsid, IID_PPV_ARGS(&factory)) : CO_E_DLLNOTFOUND, "the DLL does not have the class");
        return factory;
    }

    template <class Interface>
    [[nodiscard]] ComPtr<Interface> create(const CLSID& clsid) const {
        ComPtr<Interface> object;
        check(classObject(clsid)->CreateInstance(nullptr, IID_PPV_ARGS(&object)), "cannot create an object");
        return object;
    }

private:
    template <class Function>
    [[nodiscard]] Function* exported(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }

    HMODULE module_;
};

// Lets CoCreateInstance of this thread's apartment find a class of a Library as if it were registered, while
// this lives. Each thread that needs that has its own, made and gone on that thread, and gone before the
// Library. An engine creates images of the image library that way, of the class of what it draws, whenever
// the scale is not 1; so do createImage and what wraps memory.
class ServedClass {
public:
    ServedClass(const Library& library, const CLSID& clsid) {
        check(CoRegisterClassObject(clsid, library.classObject(clsid).Get(), CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &cookie_),
              "cannot serve the class");
    }
    ~ServedClass() { CoRevokeClassObject(cookie_); }
    ServedClass(const ServedClass&) = delete;
    ServedClass& operator=(const ServedClass&) = delete;

private:
    DWORD cookie_ = 0;
};

// A COM object of the owner's with one interface; the last reference, on whichever thread, deletes it. Made
// by new and handed to a ComPtr at once.
template <class Interface>
class Object : public Interface {
public:
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(Interface);
        *object = known ? static_cast<Interface*>(this) : nullptr;
        return known ? AddRef(), S_OK : E_NOINTERFACE;
    }
    STDMETHOD_(ULONG, AddRef)() override { return ++references_; }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    Object() = default;
    virtual ~Object() = default;

private:
    std::atomic<ULONG> references_ = 0;
};

} // namespace talxrend
