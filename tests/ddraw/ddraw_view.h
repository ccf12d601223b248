// A DirectDraw engine on a display of the test's own, and a scene that both engines can paint.
#pragma once

#include "tests/ddraw/fake_direct_draw.h"
#include "tests/images/painting.h"

namespace talx::test {

constexpr const wchar_t* bltFailedText = L"Surface Blt operation failed.";

inline ComPtr<ITalRenderEngine2> newDirectDrawEngine(HMODULE module = engineModule()) {
    return createObject<ITalRenderEngine2>(module, __uuidof(TalRenderEngine));
}

inline void expectDirectDrawError(HRESULT expected, const wchar_t* description, HRESULT actual) {
    expectError(expected, description, actual, L"Hemlar.TalRenderEngine.1");
}
inline void expectUninitialized(HRESULT actual) {
    expectDirectDrawError(static_cast<HRESULT>(0x80044001), L"Engine uninitialized.", actual);
}

struct DdrawView {
    static constexpr int width = 40, height = 30;

    // A format as the engines count them, or any other number of bits; by default without Direct3D.
    explicit DdrawView(int format = 32, Calls refuse = {"directdraw.QueryInterface"}) {
        display.bits = format == 15 ? 16 : format;
        display.redMask = format == 15 ? 0x7C00 : format == 16 ? 0xF800 : 0xFF0000;
        display.refuse = std::move(refuse);
        engine = newDirectDrawEngine();
    }
    HRESULT initialize() const {
        return engine->Initialize(reinterpret_cast<__int64>(GetDesktopWindow()), width, height);
    }
    [[nodiscard]] FakeObject& buffer() { return *display.surfaces.at("buffer"); }

    FakeDisplay display{engineModule()};
    ComPtr<ITalRenderEngine2> engine;
};

// A square icon with every index and transparency.
struct TestIcon {
    explicit TestIcon(int side = 20)
        : pixels(side * side), image(ImageKind::grey8, side, side, {{pixels.data(), side}}) {
        std::generate(pixels.begin(), pixels.end(), [value = 0]() mutable { return BYTE(value += 167); });
        for (int i = 0; i < 256; ++i) {
            static_cast<long*>(colors.array->pvData)[i] = i * 0x010307 & 0xFFFFFF;
            static_cast<BYTE*>(transparencies.array->pvData)[i] = static_cast<BYTE>(i % 101);
        }
    }
    HRESULT draw(const ComPtr<ITalRenderEngine2>& engine, double x, double y, double scale = 1) {
        return engine->DrawIcon8(0, image.icon(), &colors.array, &transparencies.array, x, y, scale, least,
                                 least, most, most);
    }

    std::vector<BYTE> pixels;
    TestArray colors{VT_I4, 256}, transparencies{VT_UI1, 256};
    TestImage image;
};

// Fills, images of every kind by both methods of scaling, and an icon, inside 40 x 30 pixels.
inline void paintScene(const ComPtr<ITalRenderEngine2>& engine) {
    BYTE bytes[256];
    for (int i = 0; i < 256; ++i) {
        bytes[i] = static_cast<BYTE>(i % 7 * (i / 5));
    }
    const ImagePlane red{bytes, 8}, green{bytes + 64, 8}, blue{bytes + 128, 8}, words{bytes + 128, 16};
    TestImage images[] = {{ImageKind::grey8, 8, 8, {green}},
                          {ImageKind::color, 8, 8, {red, green, blue}},
                          {ImageKind::grey16, 8, 8, {words}},
                          {ImageKind::range16, 8, 8, {words, green}}};
    EXPECT_EQ(S_OK, engine->put_VisiblePixelMaskEnable(VARIANT_TRUE));
    EXPECT_EQ(S_OK, engine->put_VisiblePixelMaskColor(0x00FF40));
    EXPECT_EQ(S_OK, engine->Fill(0, -5, -5, 100, 100, RGB(10, 100, 200)));
    ComPtr<ITalRenderEngineScalingParams> scaling;
    EXPECT_EQ(S_OK, engine.As(&scaling));
    for (int i = 0; i < 8; ++i) {
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(i % 2));
        EXPECT_EQ(S_OK, engine->DrawImage(0, images[i % 4].image(), i % 4 * 11 - 3, i / 4 * 12 - 2,
                                          i < 4 ? 1 : 0.4 + i * 0.2, least, least, most, most, 0));
    }
    EXPECT_EQ(S_OK, TestIcon().draw(engine, 12.7, -4.5));
    EXPECT_EQ(S_OK, engine->Fill(0, 30, 20, 38, 28, RGB(255, 0, 0)));
}

} // namespace talx::test
