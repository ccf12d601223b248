// Marks, numbers and curves.
#include "viewer/scene/overlay_axes.h"

#include "viewer/view/ticks.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

constexpr long markLength = 4;
constexpr long labelDigits = 8; // room beside a plot

Ticks ticksOf(const Axis& axis, long pixels, long distance) {
    return ticksBetween(std::min(axis.begin, axis.end), std::max(axis.begin, axis.end),
                        static_cast<int>(pixels / std::max(distance, 1L)));
}

} // namespace

PlotLayout::PlotLayout(const RECT& place, const OverlayFont& font, bool numbersBeside)
    : panel(place), plot(place) {
    const long margin = font.height() / 2;
    InflateRect(&plot, -margin, -margin);
    plot.bottom -= font.height() - margin / 2 + markLength;
    if (numbersBeside) {
        plot.left += labelDigits * font.digitWidth() - margin + 2 * markLength;
    }
}

long Axis::at(double number, long pixels) const {
    const double share = std::clamp((number - begin) / (end - begin), 0.0, 1.0);
    return std::lround(share * static_cast<double>(pixels - 1));
}

void drawAxisBelow(HDC dc, const PlotLayout& layout, const OverlayFont& font, const Axis& axis) {
    const RECT& plot = layout.plot;
    const long width = plot.right - plot.left;
    const long half = labelDigits * font.digitWidth() / 2;
    const Ticks ticks = ticksOf(axis, width, 2 * half);
    fillBox(dc, {plot.left, plot.bottom, plot.right, plot.bottom + 1}, frameColor);
    for (const double number : ticks.at) {
        const long x = plot.left + axis.at(number, width);
        fillBox(dc, {x, plot.bottom, x + 1, plot.bottom + markLength}, markColor);
        RECT label{x - half, plot.bottom + markLength, x + half, layout.panel.bottom - 1};
        // A number at the very end moves inwards, so that all of it is inside the panel.
        const std::wstring text = tickText(number, ticks.step);
        const long reach = font.width(text) / 2 + 2;
        const long inwards =
            std::max(layout.panel.left + reach - x, 0L) + std::min(layout.panel.right - reach - x, 0L);
        OffsetRect(&label, inwards, 0);
        drawLine(dc, label, text, Align::middle);
    }
}

void drawAxisBeside(HDC dc, const PlotLayout& layout, const OverlayFont& font, const Axis& axis) {
    const RECT& plot = layout.plot;
    const long height = plot.bottom - plot.top;
    const Ticks ticks = ticksOf(axis, height, 3 * font.height() / 2);
    fillBox(dc, {plot.left - 1, plot.top, plot.left, plot.bottom + 1}, frameColor);
    for (const double number : ticks.at) {
        const long y = plot.bottom - 1 - axis.at(number, height);
        fillBox(dc, {plot.left - markLength, y, plot.left, y + 1}, markColor);
        const long top = y - font.height() / 2;
        drawLine(dc, {layout.panel.left + 1, top, plot.left - markLength - 1, top + font.height()},
                 tickText(number, ticks.step), Align::right);
    }
}

void drawCurve(HDC dc, const RECT& plot, const std::vector<ColumnRange>& columns, const Axis& axis,
               COLORREF color) {
    const long height = plot.bottom - plot.top;
    long x = plot.left;
    for (const auto& [low, high] : columns) {
        if (!std::isnan(low)) {
            fillBox(dc,
                    {x, plot.bottom - 1 - axis.at(high, height), x + 1, plot.bottom - axis.at(low, height)},
                    color);
        }
        ++x;
    }
}

COLORREF curveColor(std::size_t channel, std::size_t channels) {
    constexpr COLORREF colors[] = {RGB(255, 64, 64), RGB(64, 224, 64), RGB(96, 144, 255)};
    return channels == 1 ? textColor : colors[channel];
}

} // namespace talview
