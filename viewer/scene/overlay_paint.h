// What all overlays are drawn with: the system's font, and rectangles and texts in plain colours.
//
// Whoever draws on a part of the view gets the pixels that drawing the whole would give there: every position
// comes from the place of what is drawn, none from the clip.
#pragma once

#include <talxrend.hpp>

#include <cstdint>
#include <string>

namespace talview {

// These four are among the colours that every palette has.
constexpr COLORREF panelColor = RGB(0, 0, 0);
constexpr COLORREF frameColor = RGB(128, 128, 128);
constexpr COLORREF markColor = RGB(192, 192, 192);
constexpr COLORREF textColor = RGB(255, 255, 255);

// From 0x00RRGGBB.
[[nodiscard]] constexpr COLORREF colorRef(std::uint32_t color) {
    return RGB(color >> 16 & 0xFF, color >> 8 & 0xFF, color & 0xFF);
}

// The system's font for messages.
class OverlayFont {
public:
    // As large as the system has it on a screen of so many dots per inch.
    explicit OverlayFont(UINT dpi);
    // So many pixels high.
    [[nodiscard]] static OverlayFont ofHeight(long pixels);

    [[nodiscard]] HFONT handle() const { return font_.get(); }
    [[nodiscard]] long height() const { return height_; }     // of a line
    [[nodiscard]] long digitWidth() const { return digit_; }  // of the widest digit
    [[nodiscard]] long width(const std::wstring& text) const; // in pixels

private:
    explicit OverlayFont(LOGFONTW font);

    talxrend::GdiOwner<HFONT> font_;
    talxrend::GdiOwner<HDC> dc_; // to measure with; the font is selected
    long height_ = 0;
    long digit_ = 0;
};

// Pixels for lengths that are given for 96 dots per inch.
[[nodiscard]] inline long scaled(long length, UINT dpi) {
    return MulDiv(length, static_cast<int>(dpi), 96);
}

// A colour that the palette does not have becomes the nearest one, and no pattern.
void fillBox(HDC dc, const RECT& box, COLORREF color);
// An opaque ground with a frame.
void drawPanel(HDC dc, const RECT& place);
enum class Align { left, middle, right };
// One line in the font that is selected, amid the height of a box; what does not fit is cut off.
void drawLine(HDC dc, const RECT& box, const std::wstring& text, Align align, COLORREF color = textColor);

} // namespace talview
