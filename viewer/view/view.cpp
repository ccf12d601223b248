// Changes of the view's state, and what of the view each of them touches.
#include "viewer/view/view.h"

#include "viewer/view/limits.h"
#include "viewer/view/pixel_grid.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace talview {

View::View(const Options& options)
    : options_(options), placement_(options.scale, options.at),
      coloring_{options.map, {0, 255}, options.flags ? Flags::on : Flags::off}, masking_{options.hides,
                                                                                         options.maskColor},
      isCentre_(options.centre), overlays_{options.grid,
                                           options.colorBar,
                                           options.histogram,
                                           options.profile.has_value(),
                                           options.profile,
                                           false,
                                           L""},
      markers_(options.markers) {}

void View::setPicture(const Picture& picture, bool keepsView) {
    const Picture* before = std::exchange(picture_, &picture);
    if (!before) {
        placement_.begin(picture.width, picture.height);
    } else {
        placement_.setImage(picture.width, picture.height);
    }
    if (before && !keepsView) {
        markers_.clear();
        areMarkersChanged_ = false;
        overlays_.line.reset();
    }
    const Limits opening = openingLimits(options_, picture);
    coloring_.limits = keepsView && before ? limitsKept(*before, opening) : opening;
    openedLimits_ = opening;
    damage_.addAll();
}

// Limits that a person has set stay what they mean, though the values may have another scale now.
Limits View::limitsKept(const Picture& before, Limits opening) const {
    const Picture& now = *picture_;
    if (coloring_.limits == openedLimits_ || before.kind != now.kind || before.depth != now.depth) {
        return opening;
    }
    const auto [low, high] = std::minmax({now.scale.valueOf(before.scale.of(coloring_.limits.low)),
                                          now.scale.valueOf(before.scale.of(coloring_.limits.high))});
    return low < high ? Limits{low, high} : opening;
}

void View::forgetOpening() {
    placement_.fit();
    markers_.clear();
    overlays_.line.reset();
    damage_.addAll();
}

void View::resize(long width, long height) {
    width_ = width;
    height_ = height;
    placement_.resize(width, height);
    damage_.resize(width, height);
}

std::optional<Pixel> View::pixelAt(long x, long y) const {
    if (!picture_) {
        return std::nullopt;
    }
    const PixelAxis columns(placement_.left(), picture_->width, placement_.scale(), isCentre_);
    const PixelAxis rows(placement_.top(), picture_->height, placement_.scale(), isCentre_);
    if (!Box{placement_.left(), placement_.top(), columns.end(), rows.end()}.holds(x, y)) {
        return std::nullopt;
    }
    return Pixel{columns.pixelAt(x), rows.pixelAt(y)};
}

// What is drawn can be moved where every pixel of the image is drawn from the same place of it wherever it
// lies in the view. The centre-aligned method counts from the edges of what it draws.
void View::placed(const Placement& before) {
    const bool isMoved = before.scale() == placement_.scale() && (!isCentre_ || placement_.scale() == 1);
    if (isMoved && !overlays_.help) {
        damage_.shift(placement_.left() - before.left(), placement_.top() - before.top());
    } else {
        damage_.addAll();
    }
}

void View::fit() {
    placement_.fit();
    damage_.addAll();
}

void View::center() {
    if (!picture_) {
        return;
    }
    const Placement before = placement_;
    placement_.center();
    placed(before);
}

void View::zoomAbout(Point at, double factor) {
    zoomTo(at, placement_.scale() * factor);
}

void View::zoomTo(Point at, double scale) {
    if (picture_) {
        placement_.zoomTo(at, scale);
        damage_.addAll();
    }
}

void View::move(long dx, long dy) {
    if (!picture_) {
        return;
    }
    const Placement before = placement_;
    placement_.move({static_cast<double>(dx), static_cast<double>(dy)});
    placed(before);
}

void View::setColoring(const Coloring& coloring) {
    if (std::exchange(coloring_, coloring) != coloring && picture_ && picture_->hasMap()) {
        damage_.addAll();
    }
}

void View::setLimits(Limits limits) {
    setColoring({coloring_.map, limits, coloring_.flags});
}

void View::showWholeDepth() {
    if (picture_) {
        setLimits(wholeLimits(*picture_));
    }
}

void View::showDataLimits() {
    if (picture_ && picture_->hasMap()) {
        setLimits(dataLimits(*picture_));
    }
}

void View::resetContrast() {
    if (picture_) {
        setLimits(openingLimits(options_, *picture_));
    }
}

void View::nextMap() {
    const auto& maps = colorMaps();
    setColoring(
        {coloring_.map == &maps.back() ? maps.data() : coloring_.map + 1, coloring_.limits, coloring_.flags});
}

void View::setMap(const ColorMap& map) {
    setColoring({&map, coloring_.limits, coloring_.flags});
}

void View::toggleFlags() {
    setColoring({coloring_.map, coloring_.limits, coloring_.flags == Flags::on ? Flags::off : Flags::on});
}

void View::toggleMask() {
    masking_.isOn = !masking_.isOn;
    if (picture_ && picture_->mask) {
        damage_.addAll();
    }
}

void View::nextMethod() {
    isCentre_ = !isCentre_;
    damage_.addAll();
}

void View::setOverlays(const OverlayState& overlays) {
    const OverlayState before = std::exchange(overlays_, overlays);
    if (before.help != overlays.help || (before.grid != overlays.grid && placement_.scale() > gridScale)) {
        return damage_.addAll();
    }
    if (before.lineShown() != overlays.lineShown()) {
        for (const OverlayState& state : {before, overlays}) {
            if (state.lineShown()) {
                damage_.add(boxOfLine(placement_, *state.line));
            }
        }
    }
}

Box View::markerBox(Point image) const {
    const auto corner = [&](double at, long origin) {
        return origin + std::lround(std::floor(std::clamp((at + 0.5) * placement_.scale(), -1e9, 1e9))) -
               markerSize / 2;
    };
    const long left = corner(image.x, placement_.left());
    const long top = corner(image.y, placement_.top());
    return {left, top, left + markerSize, top + markerSize};
}

void View::setMarkers(std::vector<Point> markers) {
    for (const Point& marker : markers_) {
        damage_.add(markerBox(marker));
    }
    markers_ = std::move(markers);
    areMarkersChanged_ = false;
    for (const Point& marker : markers_) {
        damage_.add(markerBox(marker));
    }
}

void View::addMarker(Point image) {
    markers_.push_back(image);
    areMarkersChanged_ = true;
    damage_.add(markerBox(image));
}

void View::moveMarker(std::size_t index, Point image) {
    damage_.add(markerBox(markers_.at(index)));
    markers_[index] = image;
    areMarkersChanged_ = true;
    damage_.add(markerBox(image));
}

void View::removeMarker(std::size_t index) {
    damage_.add(markerBox(markers_.at(index)));
    areMarkersChanged_ = true;
    markers_.erase(markers_.begin() + static_cast<std::ptrdiff_t>(index));
}

void View::showNextMarker() {
    if (!markers_.empty()) {
        const Point marker = markers_[nextMarker_++ % markers_.size()];
        const Point at = placement_.toView({marker.x + 0.5, marker.y + 0.5});
        const auto toMiddle = [](long size, double from) {
            return std::lround(std::clamp(size / 2.0 - from, -1e9, 1e9));
        };
        move(toMiddle(width_, at.x), toMiddle(height_, at.y));
    }
}

std::optional<std::size_t> View::markerAt(long x, long y) const {
    for (std::size_t index = markers_.size(); index-- > 0;) {
        if (markerBox(markers_[index]).holds(x, y)) {
            return index;
        }
    }
    return std::nullopt;
}

} // namespace talview
