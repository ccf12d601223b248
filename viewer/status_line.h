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

    // What the window leaves free below its client area.
    [[nodiscard]] long height() const { return height_; }

    void show(std::vector<std::wstring> texts);
    // A text over the whole line instead of the fields until it is empty.
    void tell(const std::wstring& message);
    void paint() const;

private:
    HWND window_;
    talxrend::GdiOwner<HFONT> font_;
    long height_;
    std::vector<std::wstring> texts_;
    std::vector<long> widths_;
    std::wstring message_;
};

} // namespace talview
