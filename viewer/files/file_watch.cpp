// The thread that waits for a folder.
#include "viewer/files/file_watch.h"

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <utility>

namespace talview {
namespace {

constexpr DWORD quietMilliseconds = 300;

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

HANDLE notificationOf(const std::wstring& path) {
    const std::wstring folder = path.substr(0, path.find_last_of(L"\\/:") + 1);
    const HANDLE notification = FindFirstChangeNotificationW(
        folder.empty() ? L"." : folder.c_str(), FALSE,
        FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE | FILE_NOTIFY_CHANGE_LAST_WRITE);
    return notification == INVALID_HANDLE_VALUE ? nullptr : notification;
}

} // namespace

class FileWatch::Watcher {
public:
    Watcher(std::wstring path, const std::function<void()>& wake)
        : path_(std::move(path)), wake_(wake), folder_(notificationOf(path_)),
          end_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
        if (folder_ && end_) {
            thread_ = std::thread([this, known = stampOf(path_)] { run(known); });
        }
    }

    ~Watcher() {
        if (thread_.joinable()) {
            SetEvent(end_.get());
            thread_.join();
        }
    }

    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    [[nodiscard]] bool takeChange() { return changed_.exchange(false); }

private:
    struct CloseEvent {
        void operator()(HANDLE event) const { CloseHandle(event); }
    };
    struct CloseNotification {
        void operator()(HANDLE notification) const { FindCloseChangeNotification(notification); }
    };

    void run(Stamp known) {
        const HANDLE waited[] = {end_.get(), folder_.get()};
        Stamp seen = known;
        ULONGLONG since = 0; // when it was seen first
        while (true) {
            // Other files of the folder may change all the time.
            const bool isWaiting = seen.exists && seen != known;
            const DWORD reason =
                WaitForMultipleObjects(2, waited, FALSE, isWaiting ? quietMilliseconds : INFINITE);
            if (reason == WAIT_OBJECT_0 + 1) {
                FindNextChangeNotification(folder_.get());
            } else if (reason != WAIT_TIMEOUT) {
                return;
            }
            const ULONGLONG time = GetTickCount64();
            if (const Stamp now = stampOf(path_); now != seen) {
                seen = now;
                since = time;
            } else if (isWaiting && time - since >= quietMilliseconds) {
                known = seen;
                changed_ = true;
                wake_();
            }
        }
    }

    std::wstring path_;
    const std::function<void()>& wake_;
    std::unique_ptr<void, CloseNotification> folder_; // null: it cannot be watched
    std::unique_ptr<void, CloseEvent> end_;
    std::atomic<bool> changed_{false};
    std::thread thread_;
};

FileWatch::FileWatch(std::function<void()> wake) : wake_(std::move(wake)) {}

FileWatch::~FileWatch() = default;

void FileWatch::watch(const std::wstring& path) {
    if (path != path_) {
        watcher_.reset();
        path_ = path;
        watcher_ = path.empty() ? nullptr : std::make_unique<Watcher>(path, wake_);
    }
}

bool FileWatch::takeChange() {
    return watcher_ && watcher_->takeChange();
}

} // namespace talview
