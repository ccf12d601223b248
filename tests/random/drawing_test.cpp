// Random drawings by both engines into buffers of every format, compared with the model after each step.
#include "tests/images/painting.h"

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;

// The colour settings of an engine and of its model, changed at random.
struct ColorTwin {
    ColorTwin(EngineView& engineView, Random& r) : view(engineView), engine(*view.engine.Get()), random(r) {
        writeRamp(0, 256);
        findIndices();
    }

    void change() {
        const auto k = static_cast<BYTE>(random.word());
        switch (random.between(0, 7)) {
        case 0:
            putMap(&Engine::put_Image8GreyWholeColorMap, {0, 10, 255, 256, 300}, state.grey8);
            isSet = true;
            break;
        case 1: {
            const OLE_COLOR ole = random.oneIn(4) ? 0x80000000u | COLOR_BTNFACE : random.word() & white;
            OLE_COLOR read = 0;
            EXPECT_EQ(S_OK, engine.put_Image8GreyColorMap(k, ole));
            EXPECT_EQ(S_OK, engine.get_Image8GreyColorMap(k, &read));
            EXPECT_EQ(translated(ole), read);
            writeRamp(state.grey8.size(), k + 1);
            state.grey8[k] = fromColorRef(read);
            state.paletteIndex[k] = view.nearestIndex(state.grey8[k]);
            isSet = true;
            break;
        }
        case 2:
            EXPECT_EQ(S_OK, engine.ClearImage8GreyColorMap());
            writeRamp(0, 256); // and no more: entries beyond 256 stay, and so do the palette's indices
            isSet = false;
            break;
        case 3:
            putMap(&Engine::put_Image16GreyColorMap, {1, 10, 1500, 65536}, state.grey16);
            break;
        case 4:
            putMap(&Engine::put_Image16RangeColorMap, {1, 256, 65540}, state.range16);
            break;
        case 5:
            EXPECT_EQ(S_OK, engine.ClearImage16RangeColorMap());
            EXPECT_EQ(S_OK, engine.UnsetColorMaps());
            EXPECT_EQ(S_OK, engine.ClearImage16GreyColorMap());
            state.grey16.clear();
            state.range16.clear();
            break;
        case 6:
            state.maskEnabled = !random.oneIn(4);
            state.maskColor = random.oneOf<std::uint32_t>({white, 0x80808080, random.word()});
            EXPECT_EQ(S_OK, engine.put_VisiblePixelMaskEnable(state.maskEnabled ? VARIANT_TRUE : 0));
            EXPECT_EQ(S_OK, engine.put_VisiblePixelMaskColor(state.maskColor));
            break;
        default:
            view.changePalette(random.between(0, 9));
            findIndices();
        }
        const auto& shown = isSet ? state.grey8 : std::vector<model::Color>{};
        EXPECT_TRUE(reads(&Engine::get_Image8GreyWholeColorMap, shown));
        EXPECT_TRUE(reads(&Engine::get_Image16GreyColorMap, state.grey16));
        EXPECT_TRUE(reads(&Engine::get_Image16RangeColorMap, state.range16));
    }
    void putMap(MapGetter put, std::initializer_list<int> counts, std::vector<model::Color>& colors) {
        std::vector<std::uint32_t> words(random.oneOf(counts));
        random.fill(words.data(), 4 * words.size());
        colors.clear();
        for (const std::uint32_t word : words) {
            colors.push_back(fromColorRef(RGB(word >> 16 & 255, word >> 8 & 255, word & 255)));
        }
        TestArray array(VT_I4, words);
        EXPECT_EQ(S_OK, (engine.*put)(&array.array));
    }
    bool reads(MapGetter get, const std::vector<model::Color>& colors) {
        return std::ranges::equal(readMap(&engine, get), colors, {}, {}, rgbWord);
    }
    void writeRamp(std::size_t from, std::size_t to) {
        state.grey8.resize(std::max(state.grey8.size(), to));
        for (std::size_t g = from; g < to; ++g) {
            state.grey8[g] = fromColorRef(RGB(g, g, g));
        }
    }
    void findIndices() {
        for (std::size_t k = 0; k < 256; ++k) {
            const model::Color c = k < state.grey8.size() ? state.grey8[k] : fromColorRef(RGB(k, k, k));
            state.paletteIndex[k] = view.nearestIndex(c);
        }
    }

    EngineView& view;
    Engine& engine;
    Random& random;
    model::ColorState state;
    bool isSet = false;
};

struct RandomDrawing : testing::TestWithParam<std::tuple<bool, int>> {};
INSTANTIATE_TEST_SUITE_P(Views, RandomDrawing, everyView, viewName);

TEST_P(RandomDrawing, ShowsWhatTheModelShows) {
    const bool directDraw = std::get<0>(GetParam());
    const int format = std::get<1>(GetParam());
    const bool real = directDraw && format == realScreen; // where each step is slow
    runCases(real ? 3 : 60, [&](Random& random) {
        EngineView view(directDraw, format);
        EngineView::initialize(view.engine.Get());
        ColorTwin colors(view, random);
        BufferTwin twin(view, random);
        std::map<Drawing::What, std::vector<std::unique_ptr<Drawing>>> drawings;
        for (int i = 0; i < 20 && !HasFailure(); ++i) {
            if (random.oneIn(4)) {
                colors.change();
            }
            const auto what = random.oneOf({Drawing::fill, Drawing::icon, Drawing::icon, Drawing::image,
                                            Drawing::image, Drawing::image});
            auto& drawn = drawings[what];
            drawn.push_back(std::make_unique<Drawing>(random, what, true,
                                                      static_cast<model::Kind>(random.between(0, 3))));
            // Some of them again: Direct3D may still have an icon, and must not take it for another one.
            Drawing& drawing = *drawn[drawn.size() - random.between(1, std::min<int>(drawn.size(), 5))];
            const int method = random.oneIn(9) ? 7 : random.between(0, 1); // of no concern to icons
            const int left = random.between(-20, 40), top = random.between(-20, 30);
            const model::Rect clip = random.oneIn(2) ? everywhere
                                                     : model::Rect{left, top, left + Drawing::side(random),
                                                                   top + Drawing::side(random)};
            view.setMethod(method);
            drawing.draw(twin.buffer, clip, colors.state, method,
                         [&](model::Color c) { return view.nearestIndex(c); });
            EXPECT_EQ(S_OK, drawing.draw(view.engine.Get(), clip));
            // On a real 32-bit screen the unused byte is free, and Direct3D rounds where the software blend
            // cuts off.
            EXPECT_TRUE(real && twin.buffer.format == 32 ? twin.holds(what == Drawing::icon ? 2 : 0)
                                                         : twin.holds())
                << "step " << i;
        }
    });
}

} // namespace
} // namespace talx::test
