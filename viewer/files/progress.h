// How far some work is, and that it is not wanted any more: between the thread that does it and the one that
// waits.
#pragma once

#include <atomic>
#include <functional>
#include <utility>

namespace talview {

// Thrown by work that is not wanted any more.
struct Cancelled {};

class Progress {
public:
    Progress() = default;
    // changed: called on the thread that does the work whenever the share has changed, however little.
    explicit Progress(std::function<void()> changed) : changed_(std::move(changed)) {}

    // Of the work, between 0 and 1.
    [[nodiscard]] double share() const { return share_; }
    void setShare(double share) {
        if (share_.exchange(share) != share && changed_) {
            changed_();
        }
    }

    void cancel() { cancelled_ = true; }
    [[nodiscard]] bool isCancelled() const { return cancelled_; }
    void throwIfCancelled() const {
        if (cancelled_) {
            throw Cancelled();
        }
    }

private:
    std::function<void()> changed_;
    std::atomic<double> share_{0};
    std::atomic<bool> cancelled_{false};
};

} // namespace talview
