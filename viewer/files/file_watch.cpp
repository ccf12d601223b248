// The thread that waits for a folder.
#include "viewer/files/file_watch.h"

#include <utility>

namespace talview {
namespace {

using Stamp = FileWatch::Stamp;

constexpr DWORD quietMilliseconds = 300;

Stamp stampOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return {};
    }
    const auto number = [](DWORD high, DWORD low) {
        return static_cast<ULONGLONG>(high) << 32 | low;
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

FileWatch::FileWatch(std::wstring path, std::function<void()> changed)
    : path_(std::move(path)), changed_(std::move(changed)), folder_(notificationOf(path_)),
      end_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (folder_ && end_) {
        thread_ = std::thread([this, known = stampOf(path_)] { run(known); });
    }
}

FileWatch::~FileWatch() {
    if (thread_.joinable()) {
        SetEvent(end_.get());
        thread_.join();
    }
}

void FileWatch::run(Stamp known) {
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
            changed_();
        }
    }
}

} // namespace talview
