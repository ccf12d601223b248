// Render target and its colours.
#include "viewer/share/save.h"

#include <algorithm>
#include <array>

namespace talview {
namespace {

// On a screen without a palette the engine has none to give to an 8-bit picture: its colours are all black.
// The owner may give it any; these are a cube of 6 steps a channel and 40 greys.
void giveColors(HBITMAP bitmap) {
    const talxrend::GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const talxrend::Selected selected(dc.get(), bitmap);
    std::array<RGBQUAD, 256> colors{};
    const auto isBlack = [](const RGBQUAD& color) {
        return !color.rgbRed && !color.rgbGreen && !color.rgbBlue;
    };
    if (GetDIBColorTable(dc.get(), 0, 256, colors.data()) != 256 ||
        !std::all_of(colors.begin(), colors.end(), isBlack)) {
        return;
    }
    for (int i = 0; i < 256; ++i) {
        const auto level = [](int step, int last) {
            return static_cast<BYTE>(step * 255 / last);
        };
        const BYTE grey = level(i - 215, 41);
        colors[i] = i < 216 ? RGBQUAD{level(i % 6, 5), level(i / 6 % 6, 5), level(i / 36, 5), 0}
                            : RGBQUAD{grey, grey, grey, 0};
    }
    SetDIBColorTable(dc.get(), 0, 256, colors.data());
}

} // namespace

void save(Scene& scene, TalRenderTargetFormatConstants format, const std::wstring& path) {
    scene.compose();
    const talxrend::Engine& engine = scene.engine();
    if (!engine.targets()) {
        return talxrend::saveView(engine, path);
    }
    const auto picture = talxrend::createPicture(engine, format);
    giveColors(talxrend::bitmapOf(picture));
    {
        const talxrend::RenderTarget target(engine, picture);
        scene.refresh(scene.extent());
    }
    talxrend::savePicture(picture, path);
}

} // namespace talview
