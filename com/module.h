// The module: a COM server DLL's lock count, class map and class objects. Each DLL supplies its
// moduleDefinition(); everything else, the exports included, is the same code in every DLL.
#pragma once

#include "com/com_object.h"

#include <atomic>

namespace talx {

// One class of the class map.
struct ObjectEntry {
    const CLSID* clsid;
    UINT script;                   // id of its registry script, a resource of type "REGISTRY"
    const wchar_t* name;           // of its coclass, "TalThing": its description is then "TalThing Class"
    const wchar_t* threadingModel; // as registered
    HRESULT (*createFactory)(REFIID iid, void** result, InstanceCreator create, const CLSID* clsid);
    InstanceCreator createInstance;
    void(WINAPI* objectMain)(bool starting);
    std::span<const ComCategoryEntry> categories;
    std::atomic<IUnknown*> factory =
        nullptr; // the cached class factory, from its first use to the module's end
};

template <class Class>
constexpr ObjectEntry objectEntry(UINT script, const wchar_t* name) {
    return {
        .clsid = &Class::GetObjectCLSID(),
        .script = script,
        .name = name,
        .threadingModel = Class::ComThreadModel::registeredName,
        .createFactory =
            &CComCreator<CComObjectCached<CComClassFactory>>::CreateInstance<InstanceCreator, const CLSID*>,
        .createInstance = &createInstance<Class>,
        .objectMain = &Class::ObjectMain,
        .categories = Class::GetCategoryMap()};
}

struct ModuleDefinition {
    std::span<ObjectEntry> classes;
    const GUID& typeLibrary; // in the DLL's resource 1
};
ModuleDefinition moduleDefinition();

// Something to do when the module is unloaded. It must live until then, and is added once.
struct ModuleTermination {
    void (*run)(ModuleTermination& self);
    ModuleTermination* next = nullptr;
};

class ComModule {
public:
    // The notifications of the DLL's entry point.
    void attach(HINSTANCE instance, const ModuleDefinition& definition);
    void detach();

    // E_POINTER without a result, CLASS_E_CLASSNOTAVAILABLE for a class that is not in the map. Throws
    // std::bad_alloc.
    HRESULT getClassObject(REFCLSID clsid, REFIID iid, void** result);

    void lock() noexcept { lockCount_.fetch_add(1); }
    void unlock() noexcept { lockCount_.fetch_sub(1); }
    [[nodiscard]] bool canUnload() const noexcept { return lockCount_.load() == 0; }

    // Any thread may call.
    void atTermination(ModuleTermination& termination) noexcept;

    // Of the DLL; null before attach.
    [[nodiscard]] HINSTANCE instance() const { return instance_; }
    [[nodiscard]] std::span<ObjectEntry> classes() const { return classes_; }
    [[nodiscard]] const GUID& typeLibrary() const { return typeLibrary_; }

private:
    std::atomic<LONG> lockCount_ = 0;
    HINSTANCE instance_ = nullptr;
    GUID typeLibrary_ = {};
    std::span<ObjectEntry> classes_;
    CRITICAL_SECTION factoryCreation_ = {};
    bool initializationFailed_ = false; // there is no critical section
    std::atomic<ModuleTermination*> terminations_ = nullptr;
};

[[nodiscard]] ComModule& comModule();

} // namespace talx
