// Axes and curves.
#include "viewer/scene/overlay_plots.h"

#include "viewer/scene/overlay_axes.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

constexpr long edge = 8; // from the view's edge, for 96 dots per inch

bool isTooSmall(const RECT& plot) {
    return plot.right - plot.left < 8 || plot.bottom - plot.top < 8;
}

// The heights of a channel's bins over so many columns: where several bins share a column, the highest.
std::vector<double> heights(const std::vector<std::uint64_t>& bins, long columns) {
    std::vector<double> heights(columns);
    for (long column = 0; column < columns; ++column) {
        const auto first = bins.size() * column / columns;
        const auto last = std::max(bins.size() * (column + 1) / columns, first + 1);
        heights[column] =
            std::sqrt(static_cast<double>(*std::max_element(bins.begin() + first, bins.begin() + last)));
    }
    return heights;
}

} // namespace

RECT HistogramPlot::place(SIZE view, UINT dpi, const OverlayFont& font) {
    const long width = std::min(scaled(256, dpi) + font.height() + 2, view.cx / 2);
    const long height = std::min(scaled(100, dpi) + 2 * font.height(), view.cy / 2);
    const long margin = scaled(edge, dpi);
    return {margin, view.cy - margin - height, margin + width, view.cy - margin};
}

void HistogramPlot::draw(HDC dc, const RECT& place, const OverlayFont& font) const {
    drawPanel(dc, place);
    const PlotLayout layout(place, font, false);
    const RECT& plot = layout.plot;
    if (isTooSmall(plot) || histogram.most == 0) {
        return;
    }
    const double first = histogram.first - 0.5;
    const double last = first + static_cast<double>(histogram.bins.front().size()) * histogram.perBin;
    const Axis values{first, last};
    const Axis counts{0, std::sqrt(static_cast<double>(histogram.most))};
    const long columns = plot.right - plot.left;
    for (std::size_t channel = 0; channel < histogram.bins.size(); ++channel) {
        const auto curve = heights(histogram.bins[channel], columns);
        auto ranges = columnRanges(curve, static_cast<int>(columns));
        if (histogram.bins.size() == 1) { // filled; nothing where nothing is counted
            std::transform(curve.begin(), curve.end(), ranges.begin(), [](double height) {
                return height > 0 ? ColumnRange{0, height} : ColumnRange{NAN, NAN};
            });
        }
        drawCurve(dc, plot, ranges, counts,
                  histogram.bins.size() == 1 ? markColor : curveColor(channel, histogram.bins.size()));
    }
    for (const double limit : {limits.low, limits.high}) {
        if (histogram.bins.size() == 1 && limit >= first && limit <= last) {
            const long x = plot.left + values.at(limit, columns);
            fillBox(dc, {x, plot.top, x + 1, plot.bottom}, RGB(255, 0, 0));
        }
    }
    drawAxisBelow(dc, layout, font, {scale.of(first), scale.of(last)});
}

RECT ProfilePlot::place(SIZE view, UINT dpi, const OverlayFont& font, long left, long right) {
    const long height = std::min(scaled(120, dpi) + 2 * font.height(), view.cy / 2);
    const long margin = scaled(edge, dpi);
    return {left + margin, view.cy - margin - height, right - margin, view.cy - margin};
}

void ProfilePlot::draw(HDC dc, const RECT& place, const OverlayFont& font) const {
    drawPanel(dc, place);
    const PlotLayout layout(place, font, true);
    const RECT& plot = layout.plot;
    if (isTooSmall(plot) || profile.size() == 0) {
        return;
    }
    const auto [low, high] = profile.extremes();
    const double more = low < high ? 0 : std::max(std::abs(low) * 1e-3, 0.5);
    const Axis values{low - more, high + more};
    const double length = profile.step * static_cast<double>(profile.size() - 1);
    const Axis distance{profile.start, profile.start + std::max(length, 1.0)};
    for (std::size_t i = 0; i < profile.curves.size(); ++i) {
        drawCurve(dc, plot, columnRanges(profile.curves[i], static_cast<int>(plot.right - plot.left)), values,
                  curveColor(i, profile.curves.size()));
    }
    drawAxisBeside(dc, layout, font, values);
    drawAxisBelow(dc, layout, font, distance);
    const RECT above{plot.left + font.height() / 2, plot.top, plot.right, plot.top + font.height()};
    drawLine(dc, above, unit, Align::left);
    const RECT corner{place.left + font.height() / 2, plot.bottom + 4, plot.left, place.bottom - 1};
    drawLine(dc, corner, L"pixels", Align::left);
}

} // namespace talview
