// Writing a module's classes and its type library to the registry, and removing them.
#pragma once

#include "com/module.h"

namespace talx {

// Both need no COM on the calling thread: where it is not initialised they initialise it for their own
// length.

// For each class in the order of the map its script, then its component categories; at last the type
// library, whose result is returned. The first failure is thrown; what was written before stays.
HRESULT registerServer(const ComModule& module);

// For each class its component categories, then its script; at last the type library. As above on failure.
HRESULT unregisterServer(const ComModule& module);

} // namespace talx
