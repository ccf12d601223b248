// The entry point and the four exports of a COM server DLL.
#include "com/failure.h"
#include "com/module.h"
#include "com/registration.h"

using talx::comModule;

namespace __gnu_cxx {
// Frees what the C++ run-time, linked into this DLL, keeps for throwing exceptions when memory is short: some
// 70 KB that would stay behind each time the DLL is unloaded.
void __freeres();
} // namespace __gnu_cxx

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* processEnds) {
    if (reason == DLL_PROCESS_ATTACH) {
        talx::prepareExceptions();
        comModule().attach(instance, talx::moduleDefinition());
    } else if (reason == DLL_PROCESS_DETACH) {
        comModule().detach();
        if (!processEnds) { // else its memory goes with it, and the heap may be locked by a thread that is
                            // gone
            talx::releaseExceptions();
            __gnu_cxx::__freeres();
        }
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** result) {
    return talx::guarded([&] { return comModule().getClassObject(clsid, iid, result); });
}

STDAPI DllCanUnloadNow() {
    return comModule().canUnload() ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
    return talx::guarded([] { return talx::registerServer(comModule()); });
}

STDAPI DllUnregisterServer() {
    return talx::guarded([] { return talx::unregisterServer(comModule()); });
}
