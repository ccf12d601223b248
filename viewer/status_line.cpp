// Fields, and drawing them.
#include "viewer/status_line.h"

#include "viewer/scene/screen.h"

#include <algorithm>
#include <utility>

namespace talview {
namespace {

constexpr long margin = 6; // beside a text

// The whole window as a device context for the length of a scope.
class FrameContext {
public:
    explicit FrameContext(HWND window) : window_(window), dc_(GetWindowDC(window)) {}
    ~FrameContext() { ReleaseDC(window_, dc_); }
    FrameContext(const FrameContext&) = delete;
    FrameContext& operator=(const FrameContext&) = delete;
    operator HDC() const { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

// The system's font for its own resolution, as large for the window's.
HFONT createFont(HWND window) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    LOGFONTW font = metrics.lfStatusFont;
    font.lfHeight = MulDiv(font.lfHeight, static_cast<int>(screenOf(window).dpi),
                           GetDeviceCaps(FrameContext(window), LOGPIXELSY));
    return CreateFontIndirectW(&font);
}

} // namespace

StatusLine::StatusLine(HWND window) : window_(window), height_(0) {
    resolutionChanged();
}

void StatusLine::resolutionChanged() {
    font_.reset(createFont(window_));
    const FrameContext dc(window_);
    const talxrend::Selected selected(dc, font_.get());
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc, &metrics);
    height_ = metrics.tmHeight + metrics.tmExternalLeading + margin;
    widths_ = {metrics.tmAveCharWidth * 24}; // the first comes and goes
}

void StatusLine::show(std::vector<std::wstring> texts) {
    if (texts == texts_) {
        return;
    }
    texts_ = std::move(texts);
    widths_.resize(texts_.size());
    {
        const FrameContext dc(window_);
        const talxrend::Selected selected(dc, font_.get());
        std::transform(texts_.begin(), texts_.end(), widths_.begin(), widths_.begin(),
                       [&](const std::wstring& text, long width) {
                           SIZE size{};
                           GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
                           return std::max(width, size.cx + 2 * margin);
                       });
    }
    paint();
}

void StatusLine::tell(const std::wstring& message) {
    told_ = GetTickCount64();
    if (std::exchange(message_, message) != message) {
        paint();
    }
}

bool StatusLine::hasBeenRead() const {
    constexpr ULONGLONG milliseconds = 2000;
    return hasMessage() && GetTickCount64() - told_ > milliseconds;
}

void StatusLine::paint() const {
    RECT frame{};
    RECT line{};
    POINT origin{};
    GetWindowRect(window_, &frame);
    GetClientRect(window_, &line);
    ClientToScreen(window_, &origin);
    OffsetRect(&line, origin.x - frame.left, origin.y - frame.top);
    line.top = line.bottom;
    line.bottom += height_;

    // Drawn beside the screen first, so that nothing flickers.
    const FrameContext screen(window_);
    const talxrend::GdiOwner<HDC> dc(CreateCompatibleDC(screen));
    const talxrend::GdiOwner<HBITMAP> bitmap(
        CreateCompatibleBitmap(screen, std::max(1L, line.right - line.left), height_));
    const talxrend::Selected selectedBitmap(dc.get(), bitmap.get());
    const talxrend::Selected selectedFont(dc.get(), font_.get());
    RECT field{0, 0, line.right - line.left, height_};
    FillRect(dc.get(), &field, GetSysColorBrush(COLOR_BTNFACE));
    SetBkMode(dc.get(), TRANSPARENT);
    SetTextColor(dc.get(), GetSysColor(COLOR_BTNTEXT));
    const auto write = [&](const std::wstring& text) {
        RECT inside = field;
        InflateRect(&inside, -margin, 0);
        DrawTextW(dc.get(), text.c_str(), -1, &inside,
                  DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
    };
    if (!message_.empty()) {
        write(message_);
    } else {
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            field.right = field.left + widths_[i];
            write(texts_[i]);
            DrawEdge(dc.get(), &field, EDGE_ETCHED, BF_RIGHT);
            field.left = field.right;
        }
    }
    BitBlt(screen, line.left, line.top, line.right - line.left, height_, dc.get(), 0, 0, SRCCOPY);
}

} // namespace talview
