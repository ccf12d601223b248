// What of the view is no longer as it should be, gathered while input comes in and worked off by one drawing.
#pragma once

#include "viewer/view/geometry.h"

#include <vector>

namespace talview {

// What one drawing has to do, in this order.
struct Repair {
    // How far what is drawn is moved first, in pixels of the view.
    long dx = 0;
    long dy = 0;
    // Then to be drawn anew; they do not overlap.
    std::vector<Box> boxes;
};

class Damage {
public:
    // The view has a size, in pixels, and nothing of it is drawn.
    void resize(long width, long height);
    void addAll();
    // What lies outside the view does not count.
    void add(Box box);
    // The image has moved, and with it whatever is drawn except for what is pinned.
    void shift(long dx, long dy);

    [[nodiscard]] bool isEmpty() const { return dx_ == 0 && dy_ == 0 && boxes_.empty(); }

    // What is to be done now; nothing is left then. wasPinned: boxes of what the last drawing has put into
    // places of the view instead of the image; isPinned: the same of the drawing to come.
    [[nodiscard]] Repair take(const std::vector<Box>& wasPinned, const std::vector<Box>& isPinned);

private:
    [[nodiscard]] Box clipped(const Box& box) const;

    Box view_;
    long dx_ = 0;
    long dy_ = 0;
    std::vector<Box> boxes_; // in the view, without overlap
};

} // namespace talview
