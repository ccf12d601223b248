// Images of every kind through COM into the composition bitmap, compared with the model pixel by pixel.
#include "tests/images/painting.h"

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;

struct DrawImage : ImageTest {};
INSTANTIATE_TEST_SUITE_P(Screens, DrawImage, everyScreen, testing::PrintToStringParamName());

// The colour settings of an engine, changed at random through its properties together with the model's.
class ColorTwin {
public:
    explicit ColorTwin(ImageTest& test) : test_(test) {
        writeRamp(0);
        findIndices();
    }

    model::ColorState state;

    void change(Random& random) {
        Engine* engine = test_.engine.Get();
        switch (random.between(0, 8)) {
        case 0:
            isSet_ = true;
            put(&Engine::put_Image8GreyWholeColorMap, random, pick(random, std::array{0, 10, 255, 256, 300}),
                state.grey8);
            break;
        case 1: {
            const auto k = static_cast<BYTE>(random.word());
            const OLE_COLOR ole = random.oneIn(4) ? 0x80000000u | COLOR_BTNFACE : random.word() & white;
            OLE_COLOR read = 0;
            EXPECT_EQ(S_OK, engine->put_Image8GreyColorMap(k, ole));
            EXPECT_EQ(S_OK, engine->get_Image8GreyColorMap(k, &read));
            EXPECT_EQ(translated(ole), read);
            if (state.grey8.size() <= k) {
                const std::size_t from = state.grey8.size();
                state.grey8.resize(k + 1);
                writeRamp(from, k + 1);
            }
            state.grey8[k] = fromColorRef(translated(ole));
            state.paletteIndex[k] = test_.format() == 8 ? test_.nearestIndex(translated(ole)) : 0;
            isSet_ = true;
            break;
        }
        case 2:
            EXPECT_EQ(S_OK, engine->ClearImage8GreyColorMap());
            writeRamp(0); // and no more: entries beyond 256 stay, and so do the palette's indices
            isSet_ = false;
            break;
        case 3:
            put(&Engine::put_Image16GreyColorMap, random, pick(random, std::array{1, 10, 1500, 65536}),
                state.grey16);
            break;
        case 4:
            put(&Engine::put_Image16RangeColorMap, random, pick(random, std::array{1, 256, 65540}),
                state.range16);
            break;
        case 5:
            EXPECT_EQ(S_OK, engine->ClearImage16GreyColorMap());
            state.grey16.clear();
            break;
        case 6:
            EXPECT_EQ(S_OK, engine->ClearImage16RangeColorMap());
            EXPECT_EQ(S_OK, engine->UnsetColorMaps());
            state.range16.clear();
            break;
        case 7:
            state.maskEnabled = !random.oneIn(4);
            state.maskColor = pick(random, std::array<std::uint32_t, 3>{white, 0x80808080, random.word()});
            EXPECT_EQ(S_OK,
                      engine->put_VisiblePixelMaskEnable(state.maskEnabled ? VARIANT_TRUE : VARIANT_FALSE));
            EXPECT_EQ(S_OK, engine->put_VisiblePixelMaskColor(state.maskColor));
            break;
        default:
            test_.screen.changePalette(random.between(0, 9));
            EXPECT_EQ(S_OK, engine->PaletteChange());
            findIndices();
        }
        EXPECT_TRUE(
            reads(&Engine::get_Image8GreyWholeColorMap, isSet_ ? state.grey8 : std::vector<model::Color>{}));
        EXPECT_TRUE(reads(&Engine::get_Image16GreyColorMap, state.grey16));
        EXPECT_TRUE(reads(&Engine::get_Image16RangeColorMap, state.range16));
    }

private:
    void put(MapGetter method, Random& random, int count, std::vector<model::Color>& colors) {
        std::vector<std::uint32_t> words(count);
        random.fill(words.data(), 4 * words.size());
        colors.clear();
        for (const std::uint32_t word : words) {
            colors.push_back(fromColorRef(RGB(word >> 16 & 255, word >> 8 & 255, word & 255)));
        }
        TestArray array(VT_I4, words);
        EXPECT_EQ(S_OK, (test_.engine.Get()->*method)(&array.array));
    }
    bool reads(MapGetter get, const std::vector<model::Color>& colors) {
        return std::ranges::equal(readMap(test_.engine.Get(), get), colors, {}, {}, rgbWord);
    }
    void writeRamp(std::size_t from, std::size_t to = 256) {
        state.grey8.resize(std::max(state.grey8.size(), to));
        for (std::size_t g = from; g < to; ++g) {
            state.grey8[g] = fromColorRef(RGB(g, g, g));
        }
    }
    void findIndices() {
        for (std::size_t k = 0; k < 256 && test_.format() == 8; ++k) {
            const model::Color c = k < state.grey8.size() ? state.grey8[k] : fromColorRef(RGB(k, k, k));
            state.paletteIndex[k] = test_.nearestIndex(RGB(c.red, c.green, c.blue));
        }
    }

    ImageTest& test_;
    bool isSet_ = false;
};

TEST_P(DrawImage, ShowsWhatTheModelShows) {
    const double scales[] = {1,
                             1,
                             1,
                             2,
                             3,
                             5,
                             17,
                             0.5,
                             0.25,
                             1.00000000005,
                             1.0000000001,
                             0.9999999999,
                             1e9,
                             1e300,
                             1e-9,
                             0,
                             -1.5,
                             notANumber,
                             infinity,
                             -infinity};
    const int limits[] = {least, least + 1, -1000000000, most - 60, most};
    ColorTwin colors(*this);
    DibRequests requests;
    for (unsigned number = 0; number < 800; ++number) {
        Random random(number);
        const auto side = [&] {
            return random.oneIn(4) ? random.between(1, 3) : random.between(1, 50);
        };
        const auto place = [&](int extent) {
            return random.oneIn(12) ? pick(random, limits) : random.between(-extent, extent - 1);
        };
        if (number == 500) { // a bitmap without masks, which is 5-5-5 where it would have been 5-6-5
            requests.failures = 1;
            EXPECT_EQ(S_OK, engine->SetExtent(60, 40));
        }
        if (random.oneIn(4)) {
            colors.change(random);
        }
        TwinImage picture(random, store, static_cast<model::Kind>(random.between(0, 3)), side(), side(),
                          random.oneIn(2), random.between(-1, 6));
        const double scale = random.oneIn(3) ? random.real(0.05, 4) : pick(random, scales);
        const int method = random.oneIn(9) ? 7 : random.between(0, 1);
        const int x = place(width), y = place(height), left = random.between(-20, 60),
                  top = random.between(-20, 46);
        const model::Rect clip =
            random.oneIn(2) ? everywhere : model::Rect{left, top, left + side(), top + 25};
        setMethod(method);
        BufferTwin twin(*this, random);
        model::drawImage(twin.buffer, picture.twin, colors.state, x, y, scale, clip, method);
        EXPECT_EQ(S_OK, engine->DrawImage(random.word(), picture.image->image(), x, y, scale, clip.left,
                                          clip.top, clip.right, clip.bottom, random.word()));
        EXPECT_TRUE(twin.holds());
        ASSERT_FALSE(HasFailure()) << "case " << number << " of seed " << seed();
    }
}

// The buffer stays as it was, the image checks that everything is released, and the next one is drawn.
TEST_P(DrawImage, ReportsEveryFailureOfAnImage) {
    const auto expected = [](model::Kind kind, ImageStep step, int plane,
                             HRESULT fault) -> std::optional<HRESULT> {
        const bool fails = FAILED(fault); // or else succeeds and yields nothing
        switch (step) {
        case ImageStep::access:
            if (!fails && kind == model::Kind::range16 && plane == 1) {
                return {}; // an image without a mask
            }
            return fails ? fault : noPixelData;
        case ImageStep::data:
            return noPixelData;
        case ImageStep::plane:
            return kind != model::Kind::color ? std::optional<HRESULT>{} : fails ? fault : noPixelData;
        case ImageStep::source:
            return fails && kind != model::Kind::range16 ? std::optional{E_FAIL} : std::nullopt;
        case ImageStep::stride:
            return fails ? std::optional{noPixelData} : std::nullopt;
        case ImageStep::depthCode:
            return fails && kind == model::Kind::grey16 ? std::optional{E_FAIL} : std::nullopt;
        default: // width and height
            return fails && plane == 0 ? std::optional{fault} : std::nullopt;
        }
    };
    for (int i = 0; i < 4 * 3 * 8 * 8; ++i) {
        const auto kind =
            static_cast<model::Kind>(format() == 8 ? 0 : i / 192); // others are never drawn there
        const auto step = static_cast<ImageStep>(1 + i / 24 % 8);
        const int plane = i / 8 % 3;
        const double scale = i & 1 ? 2 : 1;
        const HRESULT fault = i & 2 ? ownFailure : S_OK;
        Random random(i);
        TwinImage picture(random, store, kind, 20, 20);
        const auto result = expected(kind, step, plane, fault);
        if (!result || plane >= static_cast<int>(picture.planes.size())) {
            continue;
        }
        SCOPED_TRACE(i);
        BufferTwin twin(*this, random);
        picture.image->fault = {step, fault, plane, (i & 6) == 6, {}};
        expectFailure(*result, draw(picture.image->image(), scale));
        if (kind == model::Kind::grey8) {
            expectFailure(*result, drawIcon(picture, scale), L"DrawIcon8");
        }
        EXPECT_TRUE(twin.holds());
        picture.image->fault = {};
        EXPECT_EQ(S_OK, draw(picture.image->image(), scale));
        EXPECT_FALSE(twin.holds());
    }
    Random random(1);
    BufferTwin twin(*this, random);
    TestImage other(ImageKind::none, 10, 10, {}), less(ImageKind::grey8, -10, -10, {{&twin, 10}});
    EXPECT_EQ(S_OK, draw(less.image(), -1));
    EXPECT_EQ(S_OK, draw(nullptr));
    EXPECT_EQ(S_OK, draw(other.image()));
    EXPECT_EQ(S_OK, draw(other.image(), 2));
    EXPECT_TRUE(twin.holds());
}

// An image may come from elsewhere, and the window be resized while it is asked.
TEST_P(DrawImage, OutlivesTheBitmapThatItBeganWith) {
    for (int i = 0; i < 32; ++i) {
        Random random(i);
        TwinImage picture(random, store, model::Kind::grey8, width, height);
        const double scale = i & 1 ? 0.9 : 1;
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        picture.image->fault = {static_cast<ImageStep>(1 + i / 4), S_OK, 0, false, [&] {
                                    engine->SetExtent(3, 3);
                                }};
        EXPECT_EQ(S_OK, i & 2 ? draw(picture.image->image(), scale) : drawIcon(picture, scale));
    }
}

// Scaling needs an image of the library: there may be no class, no object, or one without memory. And every
// allocation may fail.
TEST_P(DrawImage, ReportsThatItCannotScale) {
    for (int way = 0; way < 12; ++way) {
        Random random(way);
        TwinImage picture(random, store, static_cast<model::Kind>(format() == 8 ? 0 : way % 4), 20, 20);
        TestImage noMemory(ImageKind::grey8, 1, 1, {{nullptr, 0}});
        BufferTwin twin(*this, random);
        const HRESULT created = way < 4 ? REGDB_E_CLASSNOTREG : way < 8 ? E_OUTOFMEMORY : E_NOINTERFACE;
        {
            const ImportHook<HOOK(CoCreateInstance)> hook(
                engineModule(), [&](REFCLSID, LPUNKNOWN, DWORD, REFIID iid, void** made) {
                    *made = nullptr;
                    return way < 8 ? created : noMemory.QueryInterface(iid, made);
                });
            expectFailure(created, draw(picture.image->image(), 2));
            expectFailure(created, drawIcon(picture, 2), L"DrawIcon8");
            EXPECT_TRUE(twin.holds());
        }
        setMethod(way / 4 % 2);
        FailurePlan plan;
        const FailingImport<"malloc", void*(std::size_t)> engineMemory(engineModule(), plan);
        plan.sweep([&] {
            BufferTwin now(*this, random);
            if (const HRESULT hr = draw(picture.image->image(), way < 8 ? 2 : 0.7); hr != S_OK) {
                expectError(E_OUTOFMEMORY, L"DrawImage", hr);
                EXPECT_TRUE(now.holds());
            }
        });
    }
}

} // namespace
} // namespace talx::test
