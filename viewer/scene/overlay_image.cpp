// Cells and lines.
#include "viewer/scene/overlay_image.h"

#include "viewer/view/line_runs.h"
#include "viewer/view/pixel_grid.h"
#include "viewer/view/pixel_values.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

constexpr long inset = 2; // of a text in its cell
constexpr long smallest = 7;

} // namespace

long PixelTexts::textHeight(const OverlayFont& like) const {
    const long room = static_cast<long>(placement.scale()) - 2 * inset - 1;
    const long digits = longestValueText(picture);
    const long byHeight = room / static_cast<long>(PixelValues::countOf(picture));
    const long byWidth = room * like.height() / (digits * like.digitWidth());
    const long height = std::min({byHeight, byWidth, 2 * like.height()});
    return height < smallest ? 0 : height;
}

COLORREF PixelTexts::textColorAt(long x, long y) const {
    const std::size_t at = picture.at(x, y);
    const std::uint32_t color =
        picture.hasMap()
            ? colorOf(picture.value(at), map, picture.valueCount(), limits, flags)
            : picture.bytes[0][at] << 16 | picture.bytes[1][at] << 8 | std::uint32_t{picture.bytes[2][at]};
    const std::uint32_t brightness =
        299 * (color >> 16 & 0xFF) + 587 * (color >> 8 & 0xFF) + 114 * (color & 0xFF);
    return brightness < 128 * 1000 ? RGB(255, 255, 255) : RGB(0, 0, 0);
}

void PixelTexts::draw(HDC dc, const RECT& clip, const OverlayFont& font) const {
    const PixelAxis across(placement.left(), picture.width, placement.scale(), isCentre);
    const PixelAxis down(placement.top(), picture.height, placement.scale(), isCentre);
    RECT cells;
    const RECT covered{placement.left(), placement.top(), across.end(), down.end()};
    if (!IntersectRect(&cells, &clip, &covered)) {
        return;
    }
    const talxrend::Selected selected(dc, font.handle());
    for (long y = down.pixelAt(cells.top); y <= down.pixelAt(cells.bottom - 1); ++y) {
        for (long x = across.pixelAt(cells.left); x <= across.pixelAt(cells.right - 1); ++x) {
            const auto texts = valueTexts(picture, x, y);
            // The grid's lines are the first column and row.
            RECT line{across.beginOf(x) + 1 + inset, down.beginOf(y) + 1 + inset,
                      across.beginOf(x + 1) - inset, down.beginOf(y + 1) - inset};
            const long free = line.bottom - line.top - static_cast<long>(texts.size()) * font.height();
            line.top += std::max(free / 2, 0L);
            for (const std::wstring& text : texts) {
                line.bottom = line.top + font.height();
                drawLine(dc, line, text, Align::middle, textColorAt(x, y));
                line.top = line.bottom;
            }
        }
    }
}

RECT LineOnImage::place() const {
    const Box box = boxOfLine(placement, line);
    return {box.left, box.top, box.right, box.bottom};
}

void LineOnImage::draw(HDC dc, const RECT& clip) const {
    // Counted from the image's corner, so that the pixels stay the same ones when it moves.
    const long left = placement.left();
    const long top = placement.top();
    const auto onImage = [&](Point pixel) {
        return Point{(pixel.x + 0.5) * placement.scale(), (pixel.y + 0.5) * placement.scale()};
    };
    const Point from = onImage(line.from);
    const Point to = onImage(line.to);
    const Box visible{clip.left - left, clip.top - top, clip.right - left, clip.bottom - top};
    const auto fill = [&](const Box& box, COLORREF color) {
        fillBox(dc, {box.left + left, box.top + top, box.right + left, box.bottom + top}, color);
    };
    for (const bool isEdge : {true, false}) {
        const COLORREF color = isEdge ? RGB(0, 0, 0) : RGB(255, 255, 255);
        for (const Box& run : lineRuns(from, to, isEdge ? 3 : 1, visible)) {
            fill(run, color);
        }
        // A square is a thick line as long as it is thick.
        const long half = isEdge ? lineEndSize : lineEndSize - 1;
        for (const Point& end : {from, to}) {
            const Point first{std::floor(end.x) - half + 0.5, std::floor(end.y) + 0.5};
            const Point last{first.x + 2.0 * half, first.y};
            for (const Box& run : lineRuns(first, last, 2 * half + 1, visible)) {
                fill(run, color);
            }
        }
    }
}

} // namespace talview
