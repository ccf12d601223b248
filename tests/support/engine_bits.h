// A window with an engine in it, and the pixels of the engine's composition buffer.
#pragma once

#include "tests/support/module.h"

#include "talxrend.h"

#include <cstdint>
#include <cstring>
#include <memory>

namespace talx::test {

class TestWindow {
public:
    // Never active: destroying an active window takes Wine seconds.
    TestWindow(int left, int top, int width, int height)
        : window_(CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, L"STATIC", L"", WS_POPUP, left, top,
                                  width, height, nullptr, nullptr, nullptr, nullptr),
                  DestroyWindow) {
        ShowWindow(handle(), SW_SHOWNA);
        UpdateWindow(handle());
    }
    [[nodiscard]] HWND handle() const { return window_.get(); }
    [[nodiscard]] __int64 value() const { return reinterpret_cast<__int64>(handle()); }

private:
    const std::unique_ptr<HWND__, decltype(&DestroyWindow)> window_;
};

// A DIB section's memory, top row first, while the bitmap lives. Empty when the bitmap is no DIB section.
class BitmapBits {
public:
    explicit BitmapBits(HGDIOBJ bitmap) {
        GdiFlush();
        if (GetObjectW(bitmap, sizeof section_, &section_) != sizeof section_) {
            section_ = {};
        }
    }

    [[nodiscard]] const DIBSECTION& section() const { return section_; }
    [[nodiscard]] int width() const { return section_.dsBm.bmWidth; }
    [[nodiscard]] int height() const { return section_.dsBm.bmHeight; }
    [[nodiscard]] int bitsPerPixel() const { return section_.dsBm.bmBitsPixel; }
    [[nodiscard]] std::uint8_t* row(int y) const {
        return static_cast<std::uint8_t*>(section_.dsBm.bmBits) +
               static_cast<std::ptrdiff_t>(y) * section_.dsBm.bmWidthBytes;
    }
    // The pixel as a little-endian number of bitsPerPixel() bits.
    [[nodiscard]] std::uint32_t pixel(int x, int y) const {
        std::uint32_t value = 0;
        const int bytes = bitsPerPixel() / 8;
        std::memcpy(&value, row(y) + x * bytes, bytes);
        return value;
    }

private:
    DIBSECTION section_{};
};

// The composition bitmap of a GDI engine, valid until its extent changes.
inline BitmapBits compositionBits(ITalRenderEngine* engine) {
    __int64 context = 0;
    EXPECT_EQ(S_OK, engine->GetDrawContext(0, &context));
    const HGDIOBJ bitmap = GetCurrentObject(reinterpret_cast<HDC>(context), OBJ_BITMAP);
    EXPECT_EQ(S_OK, engine->ReleaseDrawContext(0, context));
    return BitmapBits(bitmap);
}

} // namespace talx::test
