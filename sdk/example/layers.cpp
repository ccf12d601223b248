// What an update of one layer does, step by step. Of three layers, an image, a frame and an icon, the frame
// moves; the buffer is saved before, and after each step.
//
//     layers FOLDER     writes 1.png to 4.png there
#include <talxrend.hpp>

#include <cstdio>
#include <filesystem>

namespace {

enum Layer : long { imageLayer, frameLayer, iconLayer, layerCount };

class Scene {
public:
    explicit Scene(HWND window)
        : engine_(talxrend::create<ITalRenderEngine2>(__uuidof(TalGDIRenderEngine)), window, layerCount,
                  [this](long layer, const RECT& rect) { draw(layer, rect); }) {
        engine_.update(engine_.extent());
    }

    void moveFrame(const RECT& to, const std::filesystem::path& folder) {
        const auto save = [&](const wchar_t* name) {
            talxrend::saveView(engine_, (folder / name).wstring());
        };
        RECT changed; // where the frame was and where it will be
        UnionRect(&changed, &frame_, &to);
        save(L"1.png");
        frame_ = to;
        talxrend::LayerUpdate update(engine_, frameLayer, changed); // the engine asks for the layer below
        save(L"2.png");
        draw(frameLayer, changed);
        save(L"3.png");
        update.end(); // and for the layer above
        save(L"4.png");
        engine_.show(changed);
    }

private:
    void draw(long layer, const RECT& rect) {
        switch (layer) {
        case imageLayer:
            return engine_.drawImage(layer, image_.Get(), {0, 0}, 2, rect);
        case frameLayer: {
            const talxrend::GdiOwner<HBRUSH> yellow(CreateSolidBrush(RGB(255, 200, 0)));
            talxrend::DrawContext dc(engine_, layer, rect);
            FillRect(dc, &frame_, yellow.get());
            return dc.end();
        }
        case iconLayer:
            return engine_.drawIcon(layer, icon_.Get(), colors_, transparencies_, 90, 35, 1, rect);
        }
    }

    // A value for each pixel.
    template <class Value>
    static std::vector<std::uint8_t> pixels(int width, int height, Value&& value) {
        std::vector<std::uint8_t> values(width * height);
        for (int i = 0; i < width * height; ++i) {
            values[i] = static_cast<std::uint8_t>(value(i % width, i / width));
        }
        return values;
    }

    static constexpr int iconSize = 49;

    RECT frame_{20, 20, 80, 60};
    std::vector<std::uint8_t> ramp_ = pixels(80, 60, [](int x, int y) { return 60 + x + y; });
    std::vector<std::uint8_t> disc_ = pixels(iconSize, iconSize, [](int x, int y) {
        return std::min(std::hypot(x - iconSize / 2, y - iconSize / 2) * 4,
                        100.0); // per cents of transparency
    });
    talxrend::ComPtr<ITalImage8Grey> image_ = talxrend::wrap8Grey({80, 60}, {ramp_.data(), 80});
    talxrend::ComPtr<ITalImage8Grey> icon_ =
        talxrend::wrap8Grey({iconSize, iconSize}, {disc_.data(), iconSize});
    talxrend::SafeArray colors_{std::vector<std::uint32_t>(256, RGB(200, 0, 40))};
    talxrend::SafeArray transparencies_{pixels(256, 1, [](int x, int) { return x; })};
    talxrend::Engine engine_;
};

} // namespace

int main(int argc, char** argv) try {
    const talxrend::Apartment apartment;
    const HWND window =
        CreateWindowW(L"STATIC", L"layers", WS_POPUP, 0, 0, 160, 120, nullptr, nullptr, nullptr, nullptr);
    Scene(window).moveFrame({60, 50, 120, 90}, argc > 1 ? argv[1] : ".");
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "layers: %s\n", error.what());
    return 1;
}
