// What the mouse does to the view: buttons that are held down and moved, clicks, the wheel.
//
// Left: moves a marker that it is pressed on, or draws the line of the profile where that is shown, or else
// moves the image, as the middle button always does. With the shift key: places a marker, or removes the one
// that it is pressed on. Right: sideways changes the level of the contrast, up and down its window.
#pragma once

#include "viewer/view/view.h"

namespace talview {

enum class MouseButton { left, middle, right };

class PointerInput {
public:
    explicit PointerInput(View& view) : view_(view) {}

    // Places are pixels of the view.
    void press(MouseButton button, Point at, bool shift);
    void move(Point to);
    // The button is up again, or something else has taken the mouse.
    void release() { action_ = Action::none; }
    void wheel(Point at, double notches);
    [[nodiscard]] bool isHeld() const { return action_ != Action::none; }

private:
    enum class Action { none, pan, marker, line, contrast };
    // In image pixels, whole numbers being their middles.
    [[nodiscard]] Point placeAt(Point view) const;
    void pressLeft(Point at, bool shift);
    void dragMarker(Point to);

    View& view_;
    Action action_ = Action::none;
    Point from_;             // where the last step ended
    std::size_t marker_ = 0; // that is moved
    Point markerAt_;         // its place before rounding
    Limits limits_;          // as the contrast's drag began
    Point start_;            // where the button went down
    Point lineStart_;        // the same in image pixels
};

} // namespace talview
