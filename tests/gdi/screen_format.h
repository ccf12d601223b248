// A screen of any pixel format, and device contexts of the test's own.
#pragma once

#include "tests/support/engine_bits.h"
#include "tests/support/error_info.h"
#include "tests/support/gdi_leaks.h"

#include <array>
#include <map>
#include <vector>

namespace talx::test {

constexpr long least = -0x7FFFFFFF - 1, most = 0x7FFFFFFF;
constexpr COLORREF white = RGB(255, 255, 255), black = 0, grey = RGB(128, 128, 128);
constexpr int realScreen = 0;
constexpr int everyFormat[] = {8, 15, 16, 24, 32};
const auto everyScreen = testing::Values(realScreen, 8, 15, 16, 24, 32);

// While it lives, the screen looks to talxrend.dll like one of the given format: a buffer format, realScreen
// for what is really there, or any other number of bits. A palettised screen made up here has a palette of
// its own.
class ScreenFormat {
public:
    explicit ScreenFormat(int format) : format_(format) { changePalette(0); }

    const int format_;

    std::array<PALETTEENTRY, 256> palette{};
    void changePalette(int seed) {
        for (int i = 0; i < 256; ++i) {
            const auto level = [&](int factor) {
                return static_cast<BYTE>(i * factor + seed * (i % 5));
            };
            palette[i] = {level(37), level(11), level(83), 0};
        }
        palette[0] = {0, 0, 0, 0}; // black, grey and white are exact in every palette
        palette[254] = {128, 128, 128, 0};
        palette[255] = {255, 255, 255, 0};
    }

    DWORD compression = format_ == 16 || format_ == 32 ? BI_BITFIELDS : BI_RGB;
    DWORD redMask = format_ == 32 ? 0xFF0000 : 0xF800;

private:
    // As GDI does: the masks in the second call only, when the header has been filled.
    int describe(BITMAPINFO& info) const {
        if (info.bmiHeader.biBitCount) {
            std::memcpy(info.bmiColors, &redMask, sizeof redMask);
        }
        info.bmiHeader.biBitCount = static_cast<WORD>(format_ == 15 ? 16 : format_);
        info.bmiHeader.biCompression = compression;
        return 1;
    }

    ImportHook<HOOK(GetDIBits)> probe_{engineModule(), [this](HDC dc, HBITMAP b, UINT start, UINT n,
                                                              void* bits, BITMAPINFO* info, UINT use) {
                                           return format_ ? describe(*info)
                                                          : probe_.original(dc, b, start, n, bits, info, use);
                                       }};
    ImportHook<HOOK(GetSystemPaletteEntries)> system_{
        engineModule(), [this](HDC dc, UINT start, UINT count, PALETTEENTRY* entries) -> UINT {
            return format_ ? (std::copy_n(palette.begin() + start, count, entries), count)
                           : system_.original(dc, start, count, entries);
        }};
};

inline int formatOf(const DIBSECTION& section) {
    const int bits = section.dsBm.bmBitsPixel;
    return bits == 16 && section.dsBitfields[0] != 0xF800 ? 15 : bits;
}

// A memory context of the test's own with a bitmap in it, or a new black 32-bit DIB section.
struct TestContext {
    explicit TestContext(HBITMAP bitmap) : dc(CreateCompatibleDC(nullptr)), saved(SelectObject(dc, bitmap)) {}
    TestContext(int width, int height) : dc(CreateCompatibleDC(nullptr)) {
        const BITMAPINFO info{{sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0}, {}};
        own = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, nullptr, nullptr, 0);
        saved = SelectObject(dc, own);
    }
    ~TestContext() {
        SelectObject(dc, saved);
        EXPECT_TRUE(DeleteDC(dc) && (!own || DeleteObject(own)));
    }
    [[nodiscard]] __int64 value() const { return reinterpret_cast<__int64>(dc); }

    HDC dc;
    HGDIOBJ saved; // null when the bitmap is in another context and could not be selected
    HBITMAP own = nullptr;
};

} // namespace talx::test
