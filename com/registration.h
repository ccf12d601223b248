// Writing a module's classes and its type library to the registry, and removing them.
#pragma once

#include "com/module.h"

namespace talx {

// For each class in the order of the map its script, then its component categories; at last the type
// library. The first failure ends it and is returned; what was written before stays.
HRESULT registerServer(const ComModule& module);

// For each class its component categories, then its script; at last the type library. As above on failure.
HRESULT unregisterServer(const ComModule& module);

} // namespace talx
