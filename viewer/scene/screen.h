// What a window's screen is like.
#pragma once

#include <windows.h>

namespace talview {

struct ScreenFacts {
    int bits = 0;              // of a pixel
    bool isPalettised = false; // it has 256 colours
    UINT dpi = 96; // of the monitor with most of the window, where the system tells monitors apart
};

[[nodiscard]] ScreenFacts screenOf(HWND window);

} // namespace talview
