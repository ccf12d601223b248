// Placing the image.
#include "viewer/view/placement.h"

#include <algorithm>
#include <cmath>

namespace talview {

void Placement::place() {
    // What fits is at least one pixel of the view high and wide.
    const double fitting = std::max(
        std::min(static_cast<double>(width_) / imageWidth_, static_cast<double>(height_) / imageHeight_),
        0.5 / std::min(imageWidth_, imageHeight_));
    scale_ = wantedScale_.value_or(fitting);
    at_ = wantedAt_.value_or(Point{std::floor((width_ - imageWidth_ * scale_) / 2),
                                   std::floor((height_ - imageHeight_ * scale_) / 2)});
    // Well inside 32 bits, so that sums of positions and sizes cannot overflow.
    at_ = {std::clamp(at_.x, -1e9, 1e9), std::clamp(at_.y, -1e9, 1e9)};
    left_ = std::lround(at_.x);
    top_ = std::lround(at_.y);
}

void Placement::resize(long width, long height) {
    width_ = width;
    height_ = height;
    place();
}

void Placement::begin(long width, long height) {
    imageWidth_ = width;
    imageHeight_ = height;
    place();
}

void Placement::setImage(long width, long height) {
    if (width != imageWidth_ || height != imageHeight_) {
        imageWidth_ = width;
        imageHeight_ = height;
        fit();
    }
}

void Placement::fit() {
    wantedScale_.reset();
    wantedAt_.reset();
    place();
}

void Placement::zoomTo(Point view, double scale) {
    // What lies outside these limits already, such as a large image that fits, may come back but go no
    // farther.
    wantedScale_ = std::clamp(scale, std::min(1.0 / 32, scale_), std::max(64.0, scale_));
    const double change = *wantedScale_ / scale_;
    wantedAt_ = Point{view.x - (view.x - at_.x) * change, view.y - (view.y - at_.y) * change};
    place();
}

void Placement::center() {
    wantedScale_ = scale_;
    wantedAt_.reset();
    place();
}

void Placement::move(Point by) {
    wantedScale_ = scale_;
    wantedAt_ = Point{at_.x + by.x, at_.y + by.y};
    place();
}

} // namespace talview
