// Asking the system.
#include "viewer/scene/screen.h"

#include <memory>

namespace talview {
namespace {

struct ReleaseContext {
    void operator()(HDC dc) const { ReleaseDC(nullptr, dc); }
};

// Since Windows 10; 0 before.
UINT dpiOf(HWND window) {
    using GetDpi = UINT(WINAPI*)(HWND);
    const auto getDpi = reinterpret_cast<GetDpi>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetDpiForWindow")));
    return getDpi ? getDpi(window) : 0;
}

} // namespace

ScreenFacts screenOf(HWND window) {
    const std::unique_ptr<std::remove_pointer_t<HDC>, ReleaseContext> screen(GetDC(nullptr));
    const HDC dc = screen.get();
    const UINT dpi = dpiOf(window);
    return {GetDeviceCaps(dc, BITSPIXEL) * GetDeviceCaps(dc, PLANES),
            (GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE) != 0,
            dpi ? dpi : static_cast<UINT>(GetDeviceCaps(dc, LOGPIXELSY))};
}

} // namespace talview
