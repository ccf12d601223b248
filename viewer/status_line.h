// The line below the picture: a row of texts, each in a field that is as wide as its text has ever been. It
// is drawn into the frame of a window, below the client area.
#pragma once

#include <talxrend.hpp>

#include <string>
#include <vector>

namespace talview {

class StatusLine {
public:
    explicit StatusLine(HWND window);

    // What the window leaves free below its client area, in pixels.
    [[nodiscard]] long height() const { return height_; }

    void show(std::vector<std::wstring> texts);
    // The window is on a monitor of another resolution now: height() changes.
    void resolutionChanged();
    // A text over the whole line instead of the fields until it is empty.
    void tell(const std::wstring& message);
    [[nodiscard]] bool hasMessage() const { return !message_.empty(); }
    // There is a message, and it has been there long enough.
    [[nodiscard]] bool hasBeenRead() const;
    void paint() const;

private:
    HWND window_;
    talxrend::GdiOwner<HFONT> font_;
    long height_;
    std::vector<std::wstring> texts_;
    std::vector<long> widths_;
    std::wstring message_;
    ULONGLONG told_ = 0; // when, in milliseconds of the system
};

} // namespace talview
