// Steps of the mouse into changes of the view.
#include "viewer/view/pointer_input.h"

#include "viewer/view/contrast.h"

#include <cmath>

namespace talview {
namespace {

Point rounded(Point place) {
    return {std::round(place.x), std::round(place.y)};
}

} // namespace

Point PointerInput::placeAt(Point view) const {
    const Point corner = view_.placement().toImage({view.x + 0.5, view.y + 0.5});
    return {corner.x - 0.5, corner.y - 0.5};
}

void PointerInput::press(MouseButton button, Point at, bool shift) {
    if (!view_.picture()) {
        return;
    }
    from_ = at;
    start_ = at;
    lineStart_ = placeAt(at);
    switch (button) {
    case MouseButton::left:
        return pressLeft(at, shift);
    case MouseButton::middle:
        action_ = Action::pan;
        return;
    case MouseButton::right:
        limits_ = view_.coloring().limits;
        action_ = view_.picture()->hasMap() ? Action::contrast : Action::none;
        return;
    }
}

void PointerInput::pressLeft(Point at, bool shift) {
    const auto marker = view_.markerAt(std::lround(at.x), std::lround(at.y));
    if (shift) {
        action_ = Action::none;
        if (marker) {
            view_.removeMarker(*marker);
        } else if (const auto pixel = view_.pixelAt(std::lround(at.x), std::lround(at.y))) {
            view_.addMarker({static_cast<double>(pixel->x), static_cast<double>(pixel->y)});
        }
    } else if (marker) {
        marker_ = *marker;
        markerAt_ = view_.markers()[marker_];
        action_ = Action::marker;
    } else {
        action_ = view_.overlays().profile ? Action::line : Action::pan;
    }
}

void PointerInput::move(Point to) {
    switch (action_) {
    case Action::none:
        return;
    case Action::pan:
        view_.move(std::lround(to.x - from_.x), std::lround(to.y - from_.y));
        break;
    case Action::marker:
        dragMarker(to);
        break;
    case Action::line: {
        OverlayState overlays = view_.overlays();
        overlays.line = {lineStart_, placeAt(to)};
        view_.setOverlays(overlays);
        break;
    }
    case Action::contrast:
        view_.setLimits(dragged(limits_, to.x - start_.x, to.y - start_.y, view_.picture()->valueCount()));
        break;
    }
    from_ = to;
}

// The marker stays under the pointer as it was when it was taken.
void PointerInput::dragMarker(Point to) {
    if (marker_ >= view_.markers().size()) { // removed by a key meanwhile
        return release();
    }
    const double scale = view_.placement().scale();
    markerAt_ = {markerAt_.x + (to.x - from_.x) / scale, markerAt_.y + (to.y - from_.y) / scale};
    const Point whole = rounded(markerAt_);
    if (whole != view_.markers()[marker_]) {
        view_.moveMarker(marker_, whole);
    }
}

void PointerInput::wheel(Point at, double notches) {
    view_.zoomAbout(at, std::pow(zoomStep, notches));
}

} // namespace talview
