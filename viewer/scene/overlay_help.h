// The help page: a table of keys and what they do.
#pragma once

#include "viewer/scene/overlay_paint.h"
#include "viewer/view/help.h"

#include <vector>

namespace talview {

class HelpPage {
public:
    HelpPage(const std::vector<HelpLine>& rows, const OverlayFont& font);

    // In the middle of a view: the rows one below the other, or in blocks side by side if they are too many
    // for its height. What still does not fit is cut off.
    [[nodiscard]] RECT place(SIZE view, UINT dpi) const;
    // All of it fits.
    [[nodiscard]] bool fits(SIZE view, UINT dpi) const;
    void draw(HDC dc, SIZE view, UINT dpi) const;

private:
    [[nodiscard]] long blockWidth(UINT dpi) const;
    [[nodiscard]] long blocks(SIZE view, UINT dpi) const;
    [[nodiscard]] long rowsOfBlock(long blocks) const;

    const std::vector<HelpLine>& rows_;
    const OverlayFont& font_;
    long keys_ = 0; // width of each column
    long meanings_ = 0;
};

} // namespace talview
