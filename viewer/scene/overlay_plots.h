// Panels with a plot: the histogram of a picture, and the values along a line.
#pragma once

#include "viewer/scene/overlay_paint.h"
#include "viewer/view/histogram.h"
#include "viewer/view/profile.h"

namespace talview {

// Bars as high as the square root of what they count, so that rare values are seen beside frequent ones; of
// colour a curve for each channel. The limits are marked where they lie inside.
struct HistogramPlot {
    const Histogram& histogram;
    Limits limits; // in image values
    const ValueScale& scale;

    // At the bottom left of a view.
    [[nodiscard]] static RECT place(SIZE view, UINT dpi, const OverlayFont& font);
    void draw(HDC dc, const RECT& place, const OverlayFont& font) const;
};

// Curves of values over the distance from the line's begin in image pixels.
struct ProfilePlot {
    const Profile& profile;
    const std::wstring& unit;

    // At the bottom of a view between two edges.
    [[nodiscard]] static RECT place(SIZE view, UINT dpi, const OverlayFont& font, long left, long right);
    void draw(HDC dc, const RECT& place, const OverlayFont& font) const;
};

} // namespace talview
