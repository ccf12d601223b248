// Axes of plots: marks with numbers, and curves between them.
#pragma once

#include "viewer/scene/overlay_paint.h"
#include "viewer/view/profile.h"

#include <vector>

namespace talview {

// A panel with a plot in it: numbers below the plot, and on request beside it.
struct PlotLayout {
    PlotLayout(const RECT& place, const OverlayFont& font, bool numbersBeside);
    RECT panel;
    RECT plot;
};

// The numbers at the two ends of an axis, which lie in the middle of the first and last pixel; they differ.
struct Axis {
    double begin; // left, or bottom
    double end;

    // Pixels from the begin of an axis of so many pixels.
    [[nodiscard]] long at(double number, long pixels) const;
};

// Marks with numbers below, or left of, a plot. The font is selected.
void drawAxisBelow(HDC dc, const PlotLayout& layout, const OverlayFont& font, const Axis& axis);
void drawAxisBeside(HDC dc, const PlotLayout& layout, const OverlayFont& font, const Axis& axis);

// One range for each column of the plot; what lies beyond the axis is drawn at its end.
void drawCurve(HDC dc, const RECT& plot, const std::vector<ColumnRange>& columns, const Axis& axis,
               COLORREF color);

// Colours of the curves of a picture with so many channels.
[[nodiscard]] COLORREF curveColor(std::size_t channel, std::size_t channels);

} // namespace talview
