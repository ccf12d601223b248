// A GDI engine in a window, on a screen of any pixel format, and what its bitmaps show.
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

// While it lives, the screen looks to talxrend.dll like one of the given format: a layer format, realScreen
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

// The bits of a colour word that a format keeps.
inline COLORREF precisionOf(int format) {
    return format == 15 ? RGB(0xF8, 0xF8, 0xF8) : format == 16 ? RGB(0xF8, 0xFC, 0xF8) : white;
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

// The colours of the bitmap in a context, row by row.
inline std::vector<COLORREF> colorsOf(HDC dc, COLORREF precision = white) {
    BITMAP bitmap{};
    GetObjectW(GetCurrentObject(dc, OBJ_BITMAP), sizeof bitmap, &bitmap);
    const TestContext copy(bitmap.bmWidth, bitmap.bmHeight);
    BitBlt(copy.dc, 0, 0, bitmap.bmWidth, bitmap.bmHeight, dc, 0, 0, SRCCOPY);
    const BitmapBits bits(copy.own);
    std::vector<COLORREF> colors;
    for (int i = 0; i < bitmap.bmWidth * bitmap.bmHeight; ++i) {
        const std::uint32_t p = bits.pixel(i % bitmap.bmWidth, i / bitmap.bmWidth);
        colors.push_back(RGB(p >> 16 & 255, p >> 8 & 255, p & 255) & precision);
    }
    return colors;
}

// A new engine and its window. What the engine makes must be gone when the view is.
struct GdiView {
    static constexpr int width = 61, height = 47;

    explicit GdiView(int screenFormat = realScreen) : screen(screenFormat) {}

    static ComPtr<ITalRenderEngine2> newEngine() {
        return createObject<ITalRenderEngine2>(engineModule(), __uuidof(TalGDIRenderEngine));
    }
    HRESULT initialize(long w = width, long h = height) const {
        return engine->Initialize(window.value(), w, h);
    }

    [[nodiscard]] HDC context() const {
        __int64 value = 0;
        EXPECT_EQ(S_OK, engine->GetDrawContext(0, &value));
        return reinterpret_cast<HDC>(value);
    }
    [[nodiscard]] HPALETTE palette() const {
        return static_cast<HPALETTE>(GetCurrentObject(context(), OBJ_PAL));
    }
    [[nodiscard]] BitmapBits bits() const { return compositionBits(engine.Get()); }
    [[nodiscard]] int format() const { return formatOf(bits().section()); }
    [[nodiscard]] std::vector<COLORREF> colors() const { return colorsOf(context(), precisionOf(format())); }
    // Fills the composition bitmap with anything.
    void scribble() const {
        const DIBSECTION section = bits().section();
        std::generate_n(static_cast<BYTE*>(section.dsBm.bmBits),
                        section.dsBm.bmHeight * section.dsBm.bmWidthBytes, rand);
    }
    [[nodiscard]] std::pair<long, long> extent() const {
        std::pair<long, long> size{-1, -1};
        EXPECT_EQ(S_OK, engine->GetExtent(&size.first, &size.second));
        return size;
    }
    [[nodiscard]] bool initialized() const {
        VARIANT_BOOL value = 5;
        EXPECT_EQ(S_OK, engine->get_Initialized(&value));
        EXPECT_TRUE(value == VARIANT_TRUE || value == VARIANT_FALSE);
        return value == VARIANT_TRUE;
    }

    ScreenFormat screen;
    GdiLeakCheck leaks;
    TestWindow window{40, 30, 100, 80};
    ComPtr<ITalRenderEngine2> engine = newEngine();
};

// Makes the first calls of CreateDIBSection fail, and keeps what all of them asked for.
struct DibRequests {
    struct Request {
        BITMAPV4HEADER header;
        RGBQUAD table[256];
    };
    int failures = 0;
    std::vector<Request> seen;
    ImportHook<HOOK(CreateDIBSection)> hook{
        engineModule(),
        [this](HDC dc, const BITMAPINFO* info, UINT usage, void** bits, HANDLE section,
               DWORD offset) -> HBITMAP {
            EXPECT_EQ(sizeof(BITMAPV4HEADER), info->bmiHeader.biSize);
            EXPECT_EQ(UINT{DIB_RGB_COLORS}, usage);
            std::memcpy(&seen.emplace_back(), info, sizeof(Request));
            return failures-- > 0 ? nullptr : hook.original(dc, info, usage, bits, section, offset);
        }};
};

inline void expectNoDibSection(HRESULT hr) {
    expectError(static_cast<HRESULT>(0x8004400F), L"Unable to create the requested DIB section.", hr);
}
inline void expectNoCompatibleContext(HRESULT hr) {
    expectError(static_cast<HRESULT>(0x8004400E), L"Can't create a compatible device context.", hr);
}

} // namespace talx::test
