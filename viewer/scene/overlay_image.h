// What lies on the image and moves with it: the values in magnified pixels, and the line of the profile.
#pragma once

#include "viewer/scene/overlay_paint.h"
#include "viewer/view/color_maps.h"
#include "viewer/view/overlay_state.h"
#include "viewer/view/picture.h"
#include "viewer/view/placement.h"
#include "viewer/view/profile.h"

namespace talview {

// Raw values in the pixels, without a unit, of colour one below the other; black or white, whichever is
// readable on what the pixel shows.
struct PixelTexts {
    const Picture& picture;
    const Placement& placement;
    bool isCentre;
    const ColorMap& map;
    Limits limits;
    Flags flags;

    // Height of the largest text that fits every cell of this picture, or 0 if that is too small to be read.
    // like: a font of the same shape.
    [[nodiscard]] long textHeight(const OverlayFont& like) const;
    // font: of that height.
    void draw(HDC dc, const RECT& clip, const OverlayFont& font) const;

private:
    [[nodiscard]] COLORREF textColorAt(long x, long y) const;
};

// White with black edges, a square at each end.
struct LineOnImage {
    const Line& line;
    const Placement& placement;

    // What it covers in the view.
    [[nodiscard]] RECT place() const;
    void draw(HDC dc, const RECT& clip) const;
};

} // namespace talview
