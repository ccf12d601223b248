// A GDI engine in a window, on a screen of any pixel format, and what its bitmaps show.
#pragma once

#include "tests/random/engine_view.h"

namespace talx::test {

// The bits of a colour word that a format keeps.
inline COLORREF precisionOf(int format) {
    return format == 15 ? RGB(0xF8, 0xF8, 0xF8) : format == 16 ? RGB(0xF8, 0xFC, 0xF8) : white;
}

// The colours in a context, row by row.
inline std::vector<COLORREF> colorsOf(HDC dc, COLORREF precision = white, long width = EngineView::width,
                                      long height = EngineView::height) {
    std::vector<COLORREF> colors;
    for (int i = 0; i < width * height; ++i) {
        colors.push_back(GetPixel(dc, i % width, i / width) & precision);
    }
    return colors;
}

// Its engine holds nothing any more when the view is gone.
struct GdiView : EngineView {
    explicit GdiView(int format = realScreen) : EngineView(false, format) {}

    HRESULT initialize(long w = width, long h = height) const {
        return engine->Initialize(reinterpret_cast<__int64>(window()), w, h);
    }
    [[nodiscard]] HDC context(long layer = 0) const {
        __int64 value = 0;
        EXPECT_EQ(S_OK, engine->GetDrawContext(layer, &value));
        return reinterpret_cast<HDC>(value);
    }
    [[nodiscard]] BitmapBits bits() const { return compositionBits(engine.Get()); }
    [[nodiscard]] std::vector<COLORREF> colors(long w = width, long h = height) const {
        return colorsOf(context(), precisionOf(format()), w, h);
    }
    // Fills the composition bitmap with anything.
    void scribble() const {
        withPixels([](const Pixels& p) { std::generate_n(p.data, p.height * p.stride, rand); });
    }
};

inline void expectNoDibSection(HRESULT hr) {
    expectError(static_cast<HRESULT>(0x8004400F), L"Unable to create the requested DIB section.", hr);
}
inline void expectNoCompatibleContext(HRESULT hr) {
    expectError(static_cast<HRESULT>(0x8004400E), L"Can't create a compatible device context.", hr);
}

} // namespace talx::test
