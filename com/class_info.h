// IProvideClassInfo2 for a creatable class.
#pragma once

#include "com/module.h"

#include <ocidl.h>

namespace talx {

// The type information of a coclass of the module's type library, loaded at the first successful get() and
// kept until the module is unloaded.
class TypeInfoCache : private ModuleTermination {
public:
    constexpr TypeInfoCache() : ModuleTermination{&drop} {}

    // Any thread may call. *info is null on failure, else referenced for the caller.
    HRESULT get(const CLSID& coclass, ITypeInfo** info);

private:
    static void drop(ModuleTermination& self);

    std::atomic<ITypeInfo*> info_ = nullptr; // owned
};

// Source is the interface whose IID stands for the default source interface.
template <class Coclass, class Source>
class IProvideClassInfo2Impl : public IProvideClassInfo2 {
public:
    STDMETHOD(GetClassInfo)(ITypeInfo** info) override {
        static constinit TypeInfoCache cache;
        return bare(info ? cache.get(__uuidof(Coclass), info) : E_POINTER);
    }
    STDMETHOD(GetGUID)(DWORD kind, GUID* guid) override {
        if (!guid) {
            return bare(E_POINTER);
        }
        *guid = GUID{};
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
            return bare(E_INVALIDARG);
        }
        *guid = __uuidof(Source);
        return S_OK;
    }
};

} // namespace talx
