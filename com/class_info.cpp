// See class_info.h.
#include "com/class_info.h"

#include "com/type_library.h"

using Microsoft::WRL::ComPtr;

namespace talx {

HRESULT TypeInfoCache::get(const CLSID& coclass, ITypeInfo** info) {
    *info = nullptr;
    if (!info_.load()) {
        ComPtr<ITypeInfo> loaded;
        const HRESULT hr = guarded([&] {
            const ComPtr<ITypeLib> library = loadTypeLibrary(comModule());
            const HRESULT made = library->GetTypeInfoOfGuid(coclass, loaded.GetAddressOf());
            checkMade(made, loaded.Get());
            return made;
        });
        if (FAILED(hr)) {
            return hr;
        }
        ITypeInfo* none = nullptr;
        if (info_.compare_exchange_strong(none, loaded.Get())) { // else another thread was first
            loaded.Detach();
            comModule().atTermination(*this);
        }
    }
    *info = info_.load();
    (*info)->AddRef();
    return S_OK;
}

void TypeInfoCache::drop(ModuleTermination& self) {
    static_cast<TypeInfoCache&>(self).info_.exchange(nullptr)->Release();
}

} // namespace talx
