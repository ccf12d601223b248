// Either engine on a screen of any format, the pixels of its buffer.
#pragma once

#include "tests/ddraw/fake_direct_draw.h"
#include "tests/gdi/screen_format.h"
#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

#include <memory>
#include <optional>
#include <tuple>

namespace talx::test {

// The memory of a buffer.
struct Pixels {
    Pixels(const BitmapBits& b)
        : data(b.row(0)), stride(b.section().dsBm.bmWidthBytes), width(b.width()), height(b.height()),
          bytes(b.bitsPerPixel() / 8), format(formatOf(b.section())) {}
    Pixels(FakeObject& s)
        : data(s.memory.data()), stride(s.pitch()), width(s.width), height(s.height), bytes(s.bytes),
          format(bytes == 2 && s.display.redMask != 0xF800 ? 15 : 8 * bytes) {}

    std::uint8_t* data;
    int stride, width, height, bytes, format;

    [[nodiscard]] std::uint8_t* at(int x, int y) const { return data + y * stride + x * bytes; }
    [[nodiscard]] std::uint32_t value(int x, int y) const {
        std::uint32_t v = 0;
        std::memcpy(&v, at(x, y), bytes);
        return v;
    }
};

// An engine and whether it is DirectDraw's, the screen's format and, made up too, DirectDraw's display.
struct EngineView {
    static constexpr int width = 40, height = 30;

    EngineView(bool isDirectDraw, int format, Calls refuse = {"directdraw.QueryInterface"})
        : directDraw(isDirectDraw), screenFormat(format), screen(format) {
        if (directDraw && format != realScreen) {
            display.emplace(engineModule());
            display->bits = format == 15 ? 16 : format;
            display->redMask = format == 15 ? 0x7C00 : format == 16 ? 0xF800 : 0xFF0000;
            display->refuse = std::move(refuse);
        }
        engine = newEngine();
    }

    static HWND window() {
        static const TestWindow shown(40, 30, 100, 80);
        return shown.handle();
    }
    [[nodiscard]] const CLSID& classId() const {
        return directDraw ? __uuidof(TalRenderEngine) : __uuidof(TalGDIRenderEngine);
    }
    [[nodiscard]] ComPtr<ITalRenderEngine2> newEngine() const {
        return createObject<ITalRenderEngine2>(engineModule(), classId());
    }
    static void initialize(ITalRenderEngine2* engine) {
        EXPECT_EQ(S_OK, engine->Initialize(reinterpret_cast<__int64>(window()), width, height));
    }
    void setMethod(int method) const {
        ComPtr<ITalRenderEngineScalingParams> scaling;
        engine.As(&scaling);
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(method));
    }

    // Calls use with the pixels of the view's engine, or of another one on the same screen.
    template <class Use>
    void withPixels(const Use& use, ITalRenderEngine2* other = nullptr) const {
        if (display) {
            return use(Pixels(*display->surfaces.at(other ? "second" : "buffer")));
        }
        ITalRenderEngine2* const of = other ? other : engine.Get();
        __int64 context = 0;
        EXPECT_EQ(S_OK, of->GetDrawContext(0, &context));
        use(Pixels(BitmapBits(GetCurrentObject(reinterpret_cast<HDC>(context), OBJ_BITMAP))));
        EXPECT_EQ(S_OK, of->ReleaseDrawContext(0, context));
    }
    // All of them but for an unused byte.
    [[nodiscard]] std::vector<std::uint32_t> values(ITalRenderEngine2* other = nullptr) const {
        std::vector<std::uint32_t> result;
        const auto read = [&](const Pixels& p) {
            for (int i = 0; i < p.width * p.height; ++i) {
                result.push_back(p.value(i % p.width, i / p.width) & white);
            }
        };
        withPixels(read, other);
        return result;
    }
    // Of the engine's buffer.
    [[nodiscard]] int format() const {
        int result = 0;
        withPixels([&](const Pixels& p) { result = p.format; });
        return result;
    }
    // The index of the nearest colour in the screen's palette.
    [[nodiscard]] std::uint8_t nearestIndex(model::Color c) const {
        return static_cast<std::uint8_t>(
            GetNearestPaletteIndex(static_cast<HPALETTE>(palette_.get()), RGB(c.red, c.green, c.blue)));
    }
    void changePalette(int seed) {
        screen.changePalette(seed);
        palette_ = readPalette();
        EXPECT_EQ(S_OK, engine->PaletteChange());
    }

    const bool directDraw;
    const int screenFormat;
    ScreenFormat screen;
    GdiLeakCheck leaks;
    std::optional<FakeDisplay> display;
    ComPtr<ITalRenderEngine2> engine;

private:
    [[nodiscard]] std::shared_ptr<void> readPalette() const {
        struct {
            WORD version = 0x300, count = 256;
            PALETTEENTRY entries[256]{};
        } p;
        const HDC dc = GetDC(nullptr);
        GetSystemPaletteEntries(dc, 0, 256, p.entries);
        ReleaseDC(nullptr, dc);
        if (screenFormat) {
            std::ranges::copy(screen.palette, p.entries);
        }
        return {CreatePalette(reinterpret_cast<LOGPALETTE*>(&p)), DeleteObject};
    }

    std::shared_ptr<void> palette_ = readPalette();
};

// Every engine on every screen, for TEST_P.
const auto everyView = testing::Combine(testing::Bool(), everyScreen);
inline std::string viewName(const testing::TestParamInfo<std::tuple<bool, int>>& info) {
    const auto [directDraw, format] = info.param;
    return (directDraw ? "DirectDraw" : "Gdi") + (format ? std::to_string(format) : "Real");
}

} // namespace talx::test
