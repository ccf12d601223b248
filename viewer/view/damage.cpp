// Sums of rectangles and moves.
#include "viewer/view/damage.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace talview {
namespace {

constexpr std::size_t mostBoxes = 16; // each is an update of its own; beyond that one for all is less work

Box common(const Box& one, const Box& other) {
    return {std::max(one.left, other.left), std::max(one.top, other.top), std::min(one.right, other.right),
            std::min(one.bottom, other.bottom)};
}

// What of a box lies outside a hole, in up to four boxes.
void appendAround(std::vector<Box>& boxes, const Box& box, const Box& hole) {
    const Box inside = common(box, hole);
    if (inside.isEmpty()) {
        boxes.push_back(box);
        return;
    }
    for (const Box& part : {Box{box.left, box.top, box.right, inside.top},
                            Box{box.left, inside.top, inside.left, inside.bottom},
                            Box{inside.right, inside.top, box.right, inside.bottom},
                            Box{box.left, inside.bottom, box.right, box.bottom}}) {
        if (!part.isEmpty()) {
            boxes.push_back(part);
        }
    }
}

Box around(const std::vector<Box>& boxes) {
    Box all = boxes.front();
    for (const Box& box : boxes) {
        all = {std::min(all.left, box.left), std::min(all.top, box.top), std::max(all.right, box.right),
               std::max(all.bottom, box.bottom)};
    }
    return all;
}

} // namespace

Box Damage::clipped(const Box& box) const {
    return common(box, view_);
}

void Damage::resize(long width, long height) {
    view_ = {0, 0, width, height};
    addAll();
}

void Damage::addAll() {
    dx_ = 0; // whatever is there need not be kept
    dy_ = 0;
    boxes_.assign(1, view_);
}

void Damage::add(Box box) {
    box = clipped(box);
    if (box.isEmpty()) {
        return;
    }
    std::vector<Box> parts{box};
    for (const Box& there : boxes_) {
        std::vector<Box> rest;
        for (const Box& part : parts) {
            appendAround(rest, part, there);
        }
        parts = std::move(rest);
    }
    boxes_.insert(boxes_.end(), parts.begin(), parts.end());
    if (boxes_.size() > mostBoxes) {
        boxes_.assign(1, around(boxes_));
    }
}

void Damage::shift(long dx, long dy) {
    dx_ += dx;
    dy_ += dy;
    if (std::abs(dx_) >= view_.width() || std::abs(dy_) >= view_.height()) {
        return addAll();
    }
    for (const Box& box : std::exchange(boxes_, {})) {
        add({box.left + dx, box.top + dy, box.right + dx, box.bottom + dy});
    }
    // What comes into view with this step. A way back brings in what was there before, but it is not kept.
    add({dx > 0 ? 0 : view_.right + dx, 0, dx > 0 ? dx : view_.right, view_.bottom});
    add({0, dy > 0 ? 0 : view_.bottom + dy, view_.right, dy > 0 ? dy : view_.bottom});
}

Repair Damage::take(const std::vector<Box>& wasPinned, const std::vector<Box>& isPinned) {
    if (dx_ != 0 || dy_ != 0) {
        for (const Box& box : wasPinned) {
            add({box.left + dx_, box.top + dy_, box.right + dx_, box.bottom + dy_});
        }
        for (const Box& box : isPinned) {
            add(box);
        }
    }
    return {std::exchange(dx_, 0), std::exchange(dy_, 0), std::exchange(boxes_, {})};
}

} // namespace talview
