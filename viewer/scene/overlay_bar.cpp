// Colours and numbers.
#include "viewer/scene/overlay_bar.h"

#include "viewer/view/ticks.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

constexpr long barWidth = 16; // for 96 dots per inch, as all lengths here
constexpr long markLength = 4;
constexpr long margin = 8;
constexpr long numberDigits = 8;

} // namespace

RECT ColorBar::place(SIZE view, UINT dpi, const OverlayFont& font) {
    const long width = scaled(margin + barWidth + markLength + 4, dpi) + numberDigits * font.digitWidth();
    const long edge = scaled(margin, dpi);
    return {view.cx - edge - width, edge, view.cx - edge, view.cy - edge};
}

void ColorBar::draw(HDC dc, const RECT& place, UINT dpi, const OverlayFont& font) const {
    drawPanel(dc, place);
    RECT bar = place;
    InflateRect(&bar, -scaled(margin, dpi), -font.height());
    bar.right = bar.left + scaled(barWidth, dpi);
    if (!scale.unit.empty()) {
        drawLine(dc, {bar.left, bar.top - font.height() / 2, place.right - 1, bar.top + font.height() / 2},
                 scale.unit, Align::left);
        bar.top += font.height();
    }
    const long height = bar.bottom - bar.top;
    if (height < 2) {
        return;
    }

    RECT clip{};
    GetClipBox(dc, &clip);
    const long endRow = std::min(bar.bottom, clip.bottom);
    for (long y = std::max(bar.top, clip.top); y < endRow; ++y) {
        const double share = static_cast<double>(bar.bottom - 1 - y) / static_cast<double>(height - 1);
        fillBox(dc, {bar.left, y, bar.right, y + 1}, colorRef(colorAt(map, share)));
    }
    if (flags == Flags::on) {
        const long end = std::min(scaled(barWidth, dpi) / 2, height / 4);
        fillBox(dc, {bar.left, bar.top, bar.right, bar.top + end}, colorRef(highFlag));
        fillBox(dc, {bar.left, bar.bottom - end, bar.right, bar.bottom}, colorRef(lowFlag));
    }

    const double low = scale.of(limits.low);
    const double high = scale.of(limits.high);
    const Ticks ticks = ticksBetween(std::min(low, high), std::max(low, high),
                                     static_cast<int>(height / (3 * font.height())));
    for (const double number : ticks.at) {
        const double share = std::clamp((number - low) / (high - low), 0.0, 1.0);
        const long y = bar.bottom - 1 - std::lround(share * static_cast<double>(height - 1));
        const long markEnd = bar.right + scaled(markLength, dpi);
        fillBox(dc, {bar.right, y, markEnd, y + 1}, markColor);
        const long top = y - font.height() / 2;
        drawLine(dc, {markEnd + 2, top, place.right - 1, top + font.height()}, tickText(number, ticks.step),
                 Align::left);
    }
}

} // namespace talview
