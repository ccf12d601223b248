// Owner of a handle of the system, such as a file's or an event's.
#pragma once

#include <windows.h>

#include <memory>

namespace talview {

struct CloseSystemHandle {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};

using Handle = std::unique_ptr<void, CloseSystemHandle>;

// What CreateFileW answers; null where that is no handle.
[[nodiscard]] inline Handle ownFile(HANDLE file) {
    return Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

} // namespace talview
