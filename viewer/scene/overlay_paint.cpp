// Fonts and boxes.
#include "viewer/scene/overlay_paint.h"

#include <algorithm>

namespace talview {
namespace {

talxrend::GdiOwner<HDC> screenLikeContext() {
    return talxrend::GdiOwner<HDC>(CreateCompatibleDC(nullptr));
}

LOGFONTW messageFont() {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    return metrics.lfMessageFont;
}

LOGFONTW messageFontFor(UINT dpi) {
    LOGFONTW font = messageFont();
    font.lfHeight =
        MulDiv(font.lfHeight, static_cast<int>(dpi), GetDeviceCaps(screenLikeContext().get(), LOGPIXELSY));
    return font;
}

} // namespace

OverlayFont::OverlayFont(LOGFONTW font) : dc_(screenLikeContext()) {
    // Coloured edges would be seen in saved pictures, and grey ones need more colours than a palette has.
    const bool palettised = (GetDeviceCaps(dc_.get(), RASTERCAPS) & RC_PALETTE) != 0;
    font.lfQuality = palettised ? NONANTIALIASED_QUALITY : ANTIALIASED_QUALITY;
    font.lfWidth = 0;
    font_.reset(CreateFontIndirectW(&font));
    SelectObject(dc_.get(), font_.get());
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc_.get(), &metrics);
    height_ = std::max(1L, metrics.tmHeight);
    digit_ = 1;
    for (wchar_t digit = L'0'; digit <= L'9'; ++digit) {
        SIZE size{};
        GetTextExtentPoint32W(dc_.get(), &digit, 1, &size);
        digit_ = std::max(digit_, size.cx);
    }
}

OverlayFont::OverlayFont(UINT dpi) : OverlayFont(messageFontFor(dpi)) {}

OverlayFont OverlayFont::ofHeight(long pixels) {
    LOGFONTW font = messageFont();
    font.lfHeight = pixels;
    return OverlayFont(font);
}

long OverlayFont::width(const std::wstring& text) const {
    SIZE size{};
    GetTextExtentPoint32W(dc_.get(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

void fillBox(HDC dc, const RECT& box, COLORREF color) {
    SetBkColor(dc, color);
    ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &box, nullptr, 0, nullptr);
}

void drawPanel(HDC dc, const RECT& place) {
    RECT inner = place;
    InflateRect(&inner, -1, -1);
    fillBox(dc, place, frameColor);
    fillBox(dc, inner, panelColor);
}

// The system's own text alignment halves sums of coordinates, which rounds otherwise left of the view than
// inside: a text would not move with its box.
void drawLine(HDC dc, const RECT& box, const std::wstring& text, Align align, COLORREF color) {
    const auto length = static_cast<UINT>(text.size());
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(length), &size);
    const long free = box.right - box.left - size.cx;
    const long indent = align == Align::left ? 0 : align == Align::right ? free : free / 2;
    SetTextColor(dc, color);
    SetBkMode(dc, TRANSPARENT);
    ExtTextOutW(dc, box.left + indent, box.top + (box.bottom - box.top - size.cy) / 2, ETO_CLIPPED, &box,
                text.c_str(), length, nullptr);
}

} // namespace talview
