// See module.h.
#include "com/module.h"

namespace talx {

namespace {

constinit ComModule theModule;

class CriticalSectionHold {
public:
    explicit CriticalSectionHold(CRITICAL_SECTION& section) : section_(section) {
        EnterCriticalSection(&section_);
    }
    ~CriticalSectionHold() { LeaveCriticalSection(&section_); }
    CriticalSectionHold(const CriticalSectionHold&) = delete;
    CriticalSectionHold& operator=(const CriticalSectionHold&) = delete;

private:
    CRITICAL_SECTION& section_;
};

} // namespace

ComModule& comModule() {
    return theModule;
}

void lockModule() noexcept {
    theModule.lock();
}

void unlockModule() noexcept {
    theModule.unlock();
}

void ComModule::attach(HINSTANCE instance, const ModuleDefinition& definition) {
    instance_ = instance;
    typeLibrary_ = definition.typeLibrary;
    initializationFailed_ = !InitializeCriticalSectionAndSpinCount(&factoryCreation_, 0);
    classes_ = definition.classes;
    for (const ObjectEntry& entry : classes_) {
        entry.objectMain(true);
    }
    DisableThreadLibraryCalls(instance);
}

void ComModule::detach() {
    for (ObjectEntry& entry : classes_) {
        if (IUnknown* const factory = entry.factory.exchange(nullptr)) {
            factory->Release();
        }
        entry.objectMain(false);
    }
    for (ModuleTermination* termination = terminations_.exchange(nullptr); termination;
         termination = termination->next) {
        termination->run(*termination);
    }
    classes_ = {};
    if (!initializationFailed_) {
        DeleteCriticalSection(&factoryCreation_);
    }
}

HRESULT ComModule::getClassObject(REFCLSID clsid, REFIID iid, void** result) {
    if (!result) {
        return E_POINTER;
    }
    *result = nullptr;
    for (ObjectEntry& entry : classes_) {
        if (!InlineIsEqualGUID(clsid, *entry.clsid)) {
            continue;
        }
        if (!entry.factory.load()) {
            if (initializationFailed_) {
                return E_FAIL;
            }
            const CriticalSectionHold hold(factoryCreation_);
            if (!entry.factory.load()) {
                void* factory = nullptr;
                const HRESULT hr =
                    entry.createFactory(__uuidof(IUnknown), &factory, entry.createInstance, entry.clsid);
                if (FAILED(hr)) {
                    return hr;
                }
                entry.factory.store(static_cast<IUnknown*>(factory));
            }
        }
        return entry.factory.load()->QueryInterface(iid, result);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

void ComModule::atTermination(ModuleTermination& termination) noexcept {
    termination.next = terminations_.load();
    while (!terminations_.compare_exchange_weak(termination.next, &termination)) {
    }
}

} // namespace talx
