// Noticing that a file has changed.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace talview {

// Watches the file's folder, and tells of the file when it is another one than it was, by size or time of its
// last change, and has been left alone for a moment: somebody who writes it in pieces, or deletes it and puts
// a new one in its place, is given the time to. A file that stays away is not told of.
class FileWatch {
public:
    // changed: called on a thread of the watch's. It must do no more than send word to another thread. A
    // folder that cannot be watched is not.
    FileWatch(std::wstring path, std::function<void()> changed);
    // Waits for a call of changed that is under way, none comes after it.
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    struct Stamp {
        bool exists = false;
        std::uint64_t size = 0;
        std::uint64_t changed = 0; // its time
        bool operator==(const Stamp&) const = default;
    };

private:
    struct CloseEvent {
        void operator()(HANDLE event) const { CloseHandle(event); }
    };
    struct CloseNotification {
        void operator()(HANDLE notification) const { FindCloseChangeNotification(notification); }
    };

    void run(Stamp known);

    std::wstring path_;
    std::function<void()> changed_;
    std::unique_ptr<void, CloseNotification> folder_; // null: it cannot be watched
    std::unique_ptr<void, CloseEvent> end_;
    std::thread thread_;
};

} // namespace talview
