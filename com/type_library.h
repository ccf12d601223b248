// The type library in a module's resources, and its registration for the machine or for the current user.
#pragma once

#include "com/module.h"

#include <oaidl.h>

namespace talx {

// Whether classes are to be registered for the current user only: so it is if an ATL run-time DLL that is
// already loaded into the process says so.
[[nodiscard]] bool perUserRegistration();

// These throw what fails. Registering answers what the platform's function does.

// Loads the module's own library, registered or not.
[[nodiscard]] Microsoft::WRL::ComPtr<ITypeLib> loadTypeLibrary(const ComModule& module);

HRESULT registerTypeLibrary(const ComModule& module);
HRESULT unregisterTypeLibrary(const ComModule& module);

} // namespace talx
