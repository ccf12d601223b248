// Reading beside the window.
#pragma once

#include "viewer/files/picture_file.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace talview {

// Each request has a thread of its own, so that none waits for a decoder that is not wanted any more. To be
// used by one thread.
class Reader {
public:
    struct Result {
        FileRequest request;
        std::variant<FilePicture, std::string> outcome; // or why there is none: one line of UTF-8
    };

    // wake: called on a thread of the reader's when the result is there, and up to 20 times a second when the
    // progress has changed. It must do no more than send word to the thread that owns the reader, by
    // PostMessage for example; it is not called any more once start, cancel or the destructor has returned,
    // but for what was started last.
    explicit Reader(std::function<void()> wake);
    // Does not wait for a decoder longer than half a second; one that takes longer is left to the end of the
    // process.
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    // Replaces what is under way, and a result that was not taken.
    void start(FileRequest request);
    // Drops both. Returns at once; the decoder ends when it reads the file the next time.
    void cancel();

    // There is a request without a result still.
    [[nodiscard]] bool busy() const;
    // Share of what is under way, between 0 and 1; none if nothing is.
    [[nodiscard]] std::optional<double> progress() const;
    // The result if it is there, once.
    [[nodiscard]] std::optional<Result> take();

private:
    struct Job;
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

} // namespace talview
