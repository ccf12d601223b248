// The object model of the module's COM classes: reference counting, interface maps, creation plain and
// aggregated, class factories. Every object holds the module's lock for as long as it lives.
//
// A creatable class derives from CComObjectRootEx (its reference count), from CComCoClass (its class id) and
// from its interfaces, whose IUnknown methods it leaves alone:
//
//     class CTalThing : public CComObjectRootEx<CComSingleThreadModel>,
//                       public CComCoClass<CTalThing, TalThing>,       // the library's coclass TalThing
//                       public ITalThing2,                             // derives from ITalThing
//                       public ITalOther {
//     public:
//         static std::span<const ComInterfaceEntry> interfaceMap() {
//             static constexpr ComInterfaceEntry entries[] = {
//                 comInterface<CTalThing, ITalThing2>(),               // the first also serves IUnknown
//                 comInterface<CTalThing, ITalThing2, ITalThing>(),    // that pointer for ITalThing's IID
//                 comInterface<CTalThing, ITalOther>(),
//             };
//             return entries;
//         }
//         HRESULT FinalConstruct(); // optional: the part of the construction that may fail or query itself
//         static void WINAPI ObjectMain(bool starting); // optional: called when the module comes and goes
//     };
//
// and is completed by one line of the module's class map (com/module.h). com/class_info.h has the base for
// IProvideClassInfo2. An object that only other objects hand out needs no CComCoClass;
// makeObject creates it.
#pragma once

#include "com/method_frame.h"

#include <windows.h>

#include <climits>
#include <comcat.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <span>
#include <utility>

namespace talx {

// The module's lock count: DllCanUnloadNow answers S_OK only while it is 0.
void lockModule() noexcept;
void unlockModule() noexcept;

class ModuleLock {
public:
    ModuleLock() noexcept { lockModule(); }
    ~ModuleLock() { unlockModule(); }
    ModuleLock(const ModuleLock&) = delete;
    ModuleLock& operator=(const ModuleLock&) = delete;
};

// How references are counted, and the threading model that classes so counted are registered with.
struct CComSingleThreadModel {
    static constexpr const wchar_t* registeredName = L"Apartment";

    static ULONG Increment(LONG& count) noexcept { return static_cast<ULONG>(++count); }
    static ULONG Decrement(LONG& count) noexcept { return static_cast<ULONG>(--count); }
};

struct CComMultiThreadModel {
    static constexpr const wchar_t* registeredName = L"Both";

    static ULONG Increment(LONG& count) noexcept { return static_cast<ULONG>(InterlockedIncrement(&count)); }
    static ULONG Decrement(LONG& count) noexcept { return static_cast<ULONG>(InterlockedDecrement(&count)); }
};

// One interface that a class answers: its IID and the way from the object to the interface's pointer.
struct ComInterfaceEntry {
    const IID* iid;
    IUnknown* (*cast)(void* object);
};

template <class Class, class Interface, class AnsweredIid = Interface>
constexpr ComInterfaceEntry comInterface() {
    return {&__uuidof(AnsweredIid), [](void* object) -> IUnknown* {
                return static_cast<Interface*>(static_cast<Class*>(object));
            }};
}

// Answers QueryInterface from Class::interfaceMap().
template <class Class>
HRESULT queryInterfaceMap(Class* object, REFIID iid, void** result) {
    if (!result) {
        return E_POINTER;
    }
    *result = nullptr;
    const bool identity = InlineIsEqualGUID(iid, __uuidof(IUnknown));
    for (const ComInterfaceEntry& entry : Class::interfaceMap()) {
        if (identity || InlineIsEqualGUID(iid, *entry.iid)) {
            IUnknown* const found = entry.cast(object);
            found->AddRef();
            *result = found;
            return S_OK;
        }
    }
    return E_NOINTERFACE;
}

// The reference count of a class.
template <class ThreadModel>
class CComObjectRootEx {
public:
    using ComThreadModel = ThreadModel;

    CComObjectRootEx() = default;
    CComObjectRootEx(const CComObjectRootEx&) = delete;
    CComObjectRootEx& operator=(const CComObjectRootEx&) = delete;

    // Called once after construction, while the object is referenced. A failure destroys the object and is
    // what the creating call returns.
    HRESULT FinalConstruct() { return S_OK; }

protected:
    ~CComObjectRootEx() = default;

    ULONG InternalAddRef() noexcept { return ThreadModel::Increment(references_); }
    ULONG InternalRelease() noexcept { return ThreadModel::Decrement(references_); }
    // To be called before the object is deleted: whoever refers to it for a moment meanwhile does not delete
    // it again.
    void protectDestruction() noexcept { references_ = LONG_MIN / 2; }

private:
    LONG references_ = 0;
};

// A plain object of class Base.
template <class Base>
class CComObject final : private ModuleLock, public Base {
public:
    template <class... Args>
    explicit CComObject(Args&&... args) : Base(std::forward<Args>(args)...) {}

    STDMETHOD(QueryInterface)(REFIID iid, void** result) override {
        return queryInterfaceMap(static_cast<Base*>(this), iid, result);
    }
    STDMETHOD_(ULONG, AddRef)() override { return this->InternalAddRef(); }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) {
            this->protectDestruction();
            delete this;
        }
        return left;
    }
};

// The part of an aggregated object that has the interfaces of class Base: they all belong to the outer
// object.
template <class Base>
class CComContainedObject final : public Base {
public:
    explicit CComContainedObject(IUnknown* outer) : outer_(outer) {}

    // The object's own interfaces, counted on the outer object.
    HRESULT InternalQueryInterface(REFIID iid, void** result) {
        return queryInterfaceMap(static_cast<Base*>(this), iid, result);
    }

    STDMETHOD(QueryInterface)(REFIID iid, void** result) override {
        return outer_->QueryInterface(iid, result);
    }
    STDMETHOD_(ULONG, AddRef)() override { return outer_->AddRef(); }
    STDMETHOD_(ULONG, Release)() override { return outer_->Release(); }

private:
    IUnknown* const outer_; // not referenced: the outer object owns this one
};

// An aggregated object of class Base: its IUnknown is the one interface that is counted here.
template <class Base>
class CComAggObject final : private ModuleLock,
                            public IUnknown,
                            private CComObjectRootEx<typename Base::ComThreadModel> {
public:
    explicit CComAggObject(IUnknown* outer) : contained_(outer) {}

    HRESULT FinalConstruct() { return contained_.FinalConstruct(); }

    STDMETHOD(QueryInterface)(REFIID iid, void** result) override {
        if (!result || !InlineIsEqualGUID(iid, __uuidof(IUnknown))) {
            return contained_.InternalQueryInterface(iid, result);
        }
        *result = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHOD_(ULONG, AddRef)() override { return this->InternalAddRef(); }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) {
            this->protectDestruction();
            delete this;
        }
        return left;
    }

private:
    CComContainedObject<Base> contained_;
};

// An object that lives in a cache: the cache's own reference, the first one, does not hold the module's lock.
template <class Base>
class CComObjectCached final : public Base {
public:
    template <class... Args>
    explicit CComObjectCached(Args&&... args) : Base(std::forward<Args>(args)...) {}

    STDMETHOD(QueryInterface)(REFIID iid, void** result) override {
        return queryInterfaceMap(static_cast<Base*>(this), iid, result);
    }
    // The lock is taken before the second reference exists and given back after it is gone, so that no other
    // thread ever sees the module unlocked meanwhile.
    STDMETHOD_(ULONG, AddRef)() override {
        lockModule();
        const ULONG now = this->InternalAddRef();
        if (now != 2) {
            unlockModule();
        }
        return now;
    }
    STDMETHOD_(ULONG, Release)() override {
        const ULONG left = this->InternalRelease();
        if (left == 0) {
            this->protectDestruction();
            delete this;
        } else if (left == 1) {
            unlockModule();
        }
        return left;
    }
};

// Creates objects of the complete class Object and queries them for an interface. Throws std::bad_alloc.
template <class Object>
struct CComCreator {
    template <class... Args>
    static HRESULT CreateInstance(REFIID iid, void** result, Args... args) {
        *result = nullptr;
        // Held meanwhile, so that an object that queries itself in FinalConstruct outlives it.
        const Microsoft::WRL::ComPtr<Object> object(new Object(args...));
        const HRESULT hr = object->FinalConstruct();
        return FAILED(hr) ? hr : object->QueryInterface(iid, result);
    }
};

// Creates an object of Class, aggregated if there is an outer object. Throws std::bad_alloc.
template <class Class>
HRESULT createInstance(IUnknown* outer, REFIID iid, void** result) {
    return outer ? CComCreator<CComAggObject<Class>>::CreateInstance(iid, result, outer)
                 : CComCreator<CComObject<Class>>::CreateInstance(iid, result);
}
using InstanceCreator = HRESULT (*)(IUnknown* outer, REFIID iid, void** result);

// Creates an object for internal use, without FinalConstruct. Throws std::bad_alloc.
template <class Class, class... Args>
[[nodiscard]] Microsoft::WRL::ComPtr<CComObject<Class>> makeObject(Args&&... args) {
    return new CComObject<Class>(std::forward<Args>(args)...);
}

// A component category that a class implements, or requires of its container.
struct ComCategoryEntry {
    CATID category;
    bool required;
};

// Binds a class to its class id, and gives it the defaults of what it does not say itself.
template <class Class, class Coclass>
class CComCoClass {
public:
    static constexpr const CLSID& GetObjectCLSID() { return __uuidof(Coclass); }
    static constexpr std::span<const ComCategoryEntry> GetCategoryMap() { return {}; }

    // Called when the module is loaded (true) and unloaded (false), under the loader's lock.
    static void WINAPI ObjectMain(bool /*starting*/) {}
};

// Says of every interface of a class that it sets error information, whatever it is.
class ISupportErrorInfoImpl : public ISupportErrorInfo {
public:
    STDMETHOD(InterfaceSupportsErrorInfo)(REFIID) override { return S_OK; }
};

// The class factory of every class. LockServer holds the module's lock.
class CComClassFactory : public CComObjectRootEx<CComMultiThreadModel>,
                         public IClassFactory,
                         public ISupportErrorInfoImpl {
public:
    CComClassFactory(InstanceCreator create, const CLSID* clsid) : create_(create), clsid_(*clsid) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<CComClassFactory, IClassFactory>(),
                                                        comInterface<CComClassFactory, ISupportErrorInfo>()};
        return entries;
    }

    // E_POINTER without a result; CLASS_E_NOAGGREGATION for an outer object that asks for anything but
    // IUnknown.
    STDMETHOD(CreateInstance)(IUnknown* outer, REFIID iid, void** result) override {
        if (!result) {
            return bare(E_POINTER);
        }
        *result = nullptr;
        if (outer && !InlineIsEqualGUID(iid, __uuidof(IUnknown))) {
            return bare(CLASS_E_NOAGGREGATION);
        }
        return MethodFrame({__uuidof(IClassFactory), clsid_}, L"CreateInstance").run([&] {
            return create_(outer, iid, result);
        });
    }
    STDMETHOD(LockServer)(BOOL lock) override {
        lock ? lockModule() : unlockModule();
        return S_OK;
    }

private:
    const InstanceCreator create_;
    const CLSID& clsid_;
};

} // namespace talx
