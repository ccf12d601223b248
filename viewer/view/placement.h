// Where the image lies in the window, and how zooming and dragging change that.
#pragma once

#include "viewer/view/geometry.h"

#include <optional>

namespace talview {

constexpr double zoomStep = 1.25; // of one notch of the wheel

class Placement {
public:
    // scale: none to fit the window. at: view position of the image's top left corner, none for the middle.
    Placement(std::optional<double> scale, std::optional<Point> at) : wantedScale_(scale), wantedAt_(at) {}

    // The first image: it lies as the constructor was told.
    void begin(long width, long height);
    // Another image: it fits the window unless it has the size of the one before.
    void setImage(long width, long height);
    // The window has a new size: an image that fits or lies in the middle does so again.
    void resize(long width, long height);
    void fit();
    void zoomTo(Point view, double scale);
    void move(Point by);
    void center(); // at the scale that it has

    [[nodiscard]] long imageWidth() const { return imageWidth_; }
    [[nodiscard]] long imageHeight() const { return imageHeight_; }

    [[nodiscard]] double scale() const { return scale_; }
    [[nodiscard]] long left() const { return left_; }
    [[nodiscard]] long top() const { return top_; }
    [[nodiscard]] Point toImage(Point view) const {
        return {(view.x - left_) / scale_, (view.y - top_) / scale_};
    }
    [[nodiscard]] Point toView(Point image) const {
        return {left_ + image.x * scale_, top_ + image.y * scale_};
    }

private:
    void place();

    long imageWidth_ = 1;
    long imageHeight_ = 1;
    std::optional<double> wantedScale_;
    std::optional<Point> wantedAt_;
    long width_ = 1; // of the window
    long height_ = 1;
    double scale_ = 1;
    Point at_; // before rounding
    long left_ = 0;
    long top_ = 0;
};

} // namespace talview
