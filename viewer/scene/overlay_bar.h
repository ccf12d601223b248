// The colour bar: the map's colours from the low limit to the high one, with numbers.
#pragma once

#include "viewer/scene/overlay_paint.h"
#include "viewer/view/color_maps.h"
#include "viewer/view/picture.h"

namespace talview {

struct ColorBar {
    const ColorMap& map;
    Limits limits; // in image values
    const ValueScale& scale;
    Flags flags;

    // At the right edge of a view, from top to bottom; whatever the limits are.
    [[nodiscard]] static RECT place(SIZE view, UINT dpi, const OverlayFont& font);
    void draw(HDC dc, const RECT& place, UINT dpi, const OverlayFont& font) const;
};

} // namespace talview
