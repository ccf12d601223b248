// Where a module's file is.
#pragma once

#include "com/failure.h"

#include <windows.h>

#include <string>

namespace talx {

// The full path of a loaded module. Throws what fails (com/failure.h).
[[nodiscard]] inline std::wstring modulePath(HMODULE module) {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) {
            raise(lastErrorResult());
        }
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(2 * path.size()); // it was cut off
    }
}

} // namespace talx
