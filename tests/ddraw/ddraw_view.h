// A DirectDraw engine on a display of the test's own.
#pragma once

#include "tests/images/painting.h"

namespace talx::test {

constexpr const wchar_t* bltFailedText = L"Surface Blt operation failed.";

inline void expectDirectDrawError(HRESULT expected, const wchar_t* description, HRESULT actual) {
    expectError(expected, description, actual, L"Hemlar.TalRenderEngine.1");
}

// By default without Direct3D.
struct DdrawView : EngineView {
    explicit DdrawView(int format = 32, const Calls& refuse = {"directdraw.QueryInterface"})
        : EngineView(true, format, refuse) {}

    HRESULT initialize() const {
        return engine->Initialize(reinterpret_cast<__int64>(window()), width, height);
    }
    [[nodiscard]] FakeObject& buffer() { return *display->surfaces.at("buffer"); }
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
    HRESULT draw(const ComPtr<ITalRenderEngine2>& engine, double x = 0, double y = 0, double scale = 1) {
        return engine->DrawIcon8(0, image.icon(), &colors.array, &transparencies.array, x, y, scale, least,
                                 least, most, most);
    }
    HRESULT drawAsImage(const ComPtr<ITalRenderEngine2>& engine, double scale = 1) {
        return engine->DrawImage(0, image.image(), 0, 0, scale, least, least, most, most, 0);
    }

    std::vector<BYTE> pixels;
    TestArray colors{VT_I4, 256}, transparencies{VT_UI1, 256};
    TestImage image;
};

} // namespace talx::test
