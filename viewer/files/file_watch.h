// Noticing that a file has changed.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace talview {

// Watches a file's folder, and tells of the file when it is another one than it was, by size or time of its
// last change, and has been left alone for a moment, or has not been for a second: somebody who writes it in
// pieces, or deletes it and puts a new one in its place, is given the time to. A file that stays away is not
// told of.
class FileWatch {
public:
    // wake: called on a thread of the watch's when there is a change to take. It must do no more than send
    // word to the thread that owns the watch, by PostMessage for example; it is not called any more once
    // watch, with another file, or the destructor has returned.
    explicit FileWatch(std::function<void()> wake);
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    // From now on this file, and no other; empty: none. To be called before the file is read, so that nothing
    // is missed; goes on as it was if it is the same one. While its folder cannot be watched, the file is
    // looked at once a second. Throws talxrend::Failure or std::system_error where the system has no event or
    // no thread; no file is watched then.
    void watch(const std::wstring& path);
    // There was a change since this was asked last, or since the watch of the file began.
    [[nodiscard]] bool takeChange();

private:
    class Watcher;
    std::function<void()> wake_;
    std::wstring path_;
    std::shared_ptr<Watcher> watcher_; // null: of no file
};

} // namespace talview
