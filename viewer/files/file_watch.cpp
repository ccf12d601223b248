// The thread that waits for a folder.
#include "viewer/files/file_watch.h"

#include "viewer/files/folder.h"
#include "viewer/files/handle.h"

#include <talxrend.hpp>

#include <cstdint>
#include <mutex>
#include <thread>
#include <utility>

namespace talview {
namespace {

constexpr DWORD quietMilliseconds = 300;
constexpr DWORD mostMilliseconds = 1000;  // until somebody is told of a file that is never left alone
constexpr DWORD againMilliseconds = 1000; // until a folder that cannot be watched is tried again

struct Stamp {
    bool exists = false;
    std::uint64_t size = 0;
    std::uint64_t changed = 0; // its time
    bool operator==(const Stamp&) const = default;
};

Stamp stampOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return {};
    }
    const auto number = [](DWORD high, DWORD low) {
        return static_cast<std::uint64_t>(high) << 32 | low;
    };
    return {true, number(data.nFileSizeHigh, data.nFileSizeLow),
            number(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

struct CloseNotification {
    void operator()(HANDLE notification) const { FindCloseChangeNotification(notification); }
};

using Notification = std::unique_ptr<void, CloseNotification>;

// Null where the folder cannot be watched.
Notification notificationOf(const std::wstring& path) {
    const std::wstring folder = folderOf(path);
    const HANDLE notification = FindFirstChangeNotificationW(
        folder.empty() ? L"." : folder.c_str(), FALSE,
        FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE);
    return Notification(notification == INVALID_HANDLE_VALUE ? nullptr : notification);
}

} // namespace

// What the thread and the watch have in common; the thread's alone when the watch has let go of it, for a
// folder on another machine may keep it waiting.
class FileWatch::Watcher {
public:
    Watcher(std::wstring path, std::function<void()> wake)
        : path_(std::move(path)), wake_(std::move(wake)), folder_(notificationOf(path_)),
          end_(CreateEventW(nullptr, TRUE, FALSE, nullptr)), known_(stampOf(path_)) {
        if (!end_) {
            throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot watch the file");
        }
    }

    void end() {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
        SetEvent(end_.get());
    }

    [[nodiscard]] bool takeChange() {
        const std::lock_guard lock(mutex_);
        return std::exchange(isChanged_, false);
    }

    void run() {
        Stamp seen = known_;
        ULONGLONG first = 0; // when it became another one than the one that is known
        ULONGLONG last = 0;  // when it changed last
        for (bool isWaiting = false; wait(isWaiting ? quietMilliseconds : INFINITE);) {
            const ULONGLONG time = GetTickCount64();
            // Other files of the folder may change all the time.
            if (const Stamp now = stampOf(path_); now != seen) {
                first = isWaiting ? first : time;
                last = time;
                seen = now;
            }
            isWaiting = seen.exists && seen != known_;
            if (isWaiting && (time - last >= quietMilliseconds || time - first >= mostMilliseconds)) {
                isWaiting = false;
                known_ = seen;
                tell();
            }
        }
    }

private:
    // Until something has changed in the folder, or may have; false: it is over.
    bool wait(DWORD milliseconds) {
        const HANDLE waited[] = {end_.get(), folder_.get()};
        const DWORD reason = WaitForMultipleObjects(folder_ ? 2 : 1, waited, FALSE,
                                                    folder_ ? milliseconds : againMilliseconds);
        if (!folder_) {
            folder_ = notificationOf(path_);
        } else if (reason == WAIT_OBJECT_0 + 1 && !FindNextChangeNotification(folder_.get())) {
            folder_.reset();
        }
        return reason == WAIT_OBJECT_0 + 1 || reason == WAIT_TIMEOUT;
    }

    void tell() {
        const std::lock_guard lock(mutex_);
        if (!isOver_) {
            isChanged_ = true;
            wake_();
        }
    }

    const std::wstring path_;
    const std::function<void()> wake_;
    Notification folder_;
    const Handle end_;
    Stamp known_;

    std::mutex mutex_; // of these
    bool isOver_ = false;
    bool isChanged_ = false;
};

FileWatch::FileWatch(std::function<void()> wake) : wake_(std::move(wake)) {}

FileWatch::~FileWatch() {
    if (watcher_) {
        watcher_->end();
    }
}

void FileWatch::watch(const std::wstring& path) {
    if (path == path_) {
        return;
    }
    if (watcher_) {
        watcher_->end();
    }
    watcher_.reset();
    path_.clear();
    if (!path.empty()) {
        auto watcher = std::make_shared<Watcher>(path, wake_);
        std::thread([watcher] { watcher->run(); }).detach();
        watcher_ = std::move(watcher);
        path_ = path;
    }
}

bool FileWatch::takeChange() {
    return watcher_ && watcher_->takeChange();
}

} // namespace talview
