// Columns and rows.
#include "viewer/scene/overlay_help.h"

#include <algorithm>

namespace talview {
namespace {

constexpr long margin = 12; // for 96 dots per inch

} // namespace

HelpPage::HelpPage(const std::vector<HelpLine>& rows, const OverlayFont& font) : rows_(rows), font_(font) {
    for (const HelpLine& row : rows_) {
        if (!row.keys.empty()) {
            keys_ = std::max(keys_, font.width(row.keys));
            meanings_ = std::max(meanings_, font.width(row.does));
        }
    }
}

long HelpPage::rowsOfBlock(long blocks) const {
    return (static_cast<long>(rows_.size()) + blocks - 1) / blocks;
}

long HelpPage::blockWidth(UINT dpi) const {
    return keys_ + meanings_ + 3 * scaled(margin, dpi);
}

long HelpPage::blocks(SIZE view, UINT dpi) const {
    const long fitting = std::max((view.cy - 2 * scaled(margin, dpi)) / font_.height(), 1L);
    const long wanted = (static_cast<long>(rows_.size()) + fitting - 1) / fitting;
    return std::clamp(wanted, 1L, std::max(view.cx / blockWidth(dpi), 1L));
}

bool HelpPage::fits(SIZE view, UINT dpi) const {
    const long count = blocks(view, dpi);
    return count * blockWidth(dpi) <= view.cx &&
           rowsOfBlock(count) * font_.height() + 2 * scaled(margin, dpi) <= view.cy;
}

RECT HelpPage::place(SIZE view, UINT dpi) const {
    const long gap = scaled(margin, dpi);
    const long count = blocks(view, dpi);
    const SIZE size{count * blockWidth(dpi), rowsOfBlock(count) * font_.height() + 2 * gap};
    const RECT page{(view.cx - size.cx) / 2, (view.cy - size.cy) / 2, (view.cx + size.cx) / 2,
                    (view.cy + size.cy) / 2};
    const RECT all{0, 0, view.cx, view.cy};
    RECT visible;
    IntersectRect(&visible, &page, &all);
    return visible;
}

void HelpPage::draw(HDC dc, SIZE view, UINT dpi) const {
    const RECT page = place(view, dpi);
    drawPanel(dc, page);
    const long gap = scaled(margin, dpi);
    const long perBlock = rowsOfBlock(blocks(view, dpi));
    RECT line{page.left + gap, page.top + gap, 0, 0};
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (i > 0 && static_cast<long>(i) % perBlock == 0) {
            line.left += blockWidth(dpi);
            line.top = page.top + gap;
        }
        const HelpLine& row = rows_[i];
        line.bottom = line.top + font_.height();
        line.right = std::min(line.left + keys_ + gap + meanings_, page.right - 1);
        if (row.keys.empty()) {
            drawLine(dc, line, row.does, Align::left, markColor);
        } else {
            drawLine(dc, line, row.keys, Align::left);
            RECT meaning = line;
            meaning.left += keys_ + gap;
            drawLine(dc, meaning, row.does, Align::left);
        }
        line.top = line.bottom;
    }
}

} // namespace talview
