// Where a module's file is.
#pragma once

#include "com/failure.h"

#include <string>

namespace talx {

// The full path of a loaded module; of the running program for null. Throws what keeps it from being known.
[[nodiscard]] inline std::wstring modulePath(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    while (length == path.size()) { // cut off
        path.resize(2 * path.size());
        length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    }
    check(length != 0 ? S_OK : lastErrorResult()); // nothing may be registered without a path
    path.resize(length);
    return path;
}

} // namespace talx
