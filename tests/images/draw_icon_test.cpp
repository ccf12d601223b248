// Icons through COM into the composition bitmap, compared with the model; arrays of every shape; failures.
#include "tests/images/painting.h"

namespace talx::test {
namespace {

struct IconMaps {
    std::vector<OLE_COLOR> colors = std::vector<OLE_COLOR>(256);
    std::vector<BYTE> transparency = std::vector<BYTE>(256);
};

struct DrawIcon8 : ImageTest {
    HRESULT drawIcon(TwinImage& icon, const IconMaps& maps, double x = 0, double y = 0, double scale = 1,
                     const model::Rect& clip = everywhere) const {
        TestArray colors(VT_I4, maps.colors), transparency(VT_UI1, maps.transparency);
        return engine->DrawIcon8(-3, icon.image->icon(), &colors.array, &transparency.array, x, y, scale,
                                 clip.left, clip.top, clip.right, clip.bottom);
    }
};
INSTANTIATE_TEST_SUITE_P(Screens, DrawIcon8, everyScreen, testing::PrintToStringParamName());

TEST_P(DrawIcon8, ShowsWhatTheModelShows) {
    const double scales[] = {1,   1,    1, 2,  3,          0.5,     0.4, 1.00000000005, 1.0000000001,
                             1e9, 1e-9, 0, -2, notANumber, infinity};
    const double places[] = {10.7, -0.5,         -3.99,      0.999,    60.5,     -1e10,
                             1e10, 2147483647.5, notANumber, infinity, -infinity};
    const OLE_COLOR colors[] = {0x80000000u | COLOR_BTNFACE, black, white, grey, 0x02123456};
    setMethod(1); // of no concern to icons
    for (unsigned number = 0; number < 700; ++number) {
        Random random(number);
        const auto place = [&](int extent) {
            return random.oneIn(4) ? pick(random, places) : random.real(-extent, extent);
        };
        TwinImage icon(random, store, model::Kind::grey8, random.between(1, 40), random.between(1, 40));
        IconMaps maps;
        model::Icon twinIcon{icon.twin.planes[0], {}, {}};
        for (int i = 0; i < 256; ++i) {
            maps.colors[i] = random.oneIn(3)   ? maps.colors[i ? i - 1 : 0]
                             : random.oneIn(3) ? pick(random, colors)
                                               : random.word() & white;
            maps.transparency[i] = static_cast<BYTE>(
                random.oneIn(3) ? pick(random, std::array{0, 50, 100, 101, 255}) : random.between(0, 100));
            twinIcon.colors[i] = fromColorRef(translated(maps.colors[i]));
            twinIcon.transparency[i] = maps.transparency[i];
        }
        const double scale = random.oneIn(3) ? random.real(0.1, 4) : pick(random, scales);
        const double x = place(width), y = place(height);
        const int left = random.between(-9, 60), top = random.between(-9, 46);
        const model::Rect clip =
            random.oneIn(2) ? everywhere : model::Rect{left, top, left + random.between(0, 40), top + 25};
        BufferTwin twin(*this, random);
        model::drawIcon(twin.buffer, twinIcon, x, y, scale, clip,
                        [this](model::Color c) { return nearestIndex(RGB(c.red, c.green, c.blue)); });
        EXPECT_EQ(S_OK, drawIcon(icon, maps, x, y, scale, clip));
        ASSERT_TRUE(twin.holds()) << "case " << number << " of seed " << seed();
    }
}

TEST_P(DrawIcon8, RefusesArraysOfAnotherShape) {
    Random random(2);
    TwinImage icon(random, store, model::Kind::grey8, 9, 9);
    TestArray colors(VT_I4, 256), bytes(VT_UI1, 256), none(VT_I4, 0), fewColors(VT_I4, 255),
        narrow(VT_I2, 256), fewBytes(VT_UI1, 255), wide(VT_R8, 256), flat(VT_I4, 256, 0, 2),
        flatBytes(VT_UI1, 256, 0, 2), manyColors(VT_UI4, 300, -7), manyBytes(VT_I1, 300, 44);
    SAFEARRAY* null = nullptr;
    BufferTwin twin(*this, random);
    const auto call = [&](SAFEARRAY** colorMap, SAFEARRAY** transparencyMap, ITalImage8Grey* image) {
        return engine->DrawIcon8(0, image, colorMap, transparencyMap, 0, 0, 1, 0, 0, 9, 9);
    };
    for (const auto& [colorMap, transparencyMap, expected] :
         {std::tuple<SAFEARRAY**, SAFEARRAY**, HRESULT>{nullptr, &bytes.array, E_POINTER},
          {&colors.array, nullptr, E_POINTER},
          {&null, &bytes.array, E_POINTER},
          {&colors.array, &null, E_POINTER},
          {&none.array, &bytes.array, E_INVALIDARG},
          {&fewColors.array, &bytes.array, E_INVALIDARG},
          {&narrow.array, &bytes.array, E_INVALIDARG},
          {&wide.array, &bytes.array, E_INVALIDARG},
          {&flat.array, &bytes.array, E_INVALIDARG},
          {&colors.array, &colors.array, E_INVALIDARG},
          {&colors.array, &fewBytes.array, E_INVALIDARG},
          {&colors.array, &flatBytes.array, E_INVALIDARG}}) {
        expectError(expected, L"DrawIcon8", call(colorMap, transparencyMap, icon.image->icon()));
    }
    for (int failing = 0; failing < 2; ++failing) { // the first or the second array cannot be locked
        int calls = 0;
        ImportHook<HOOK(SafeArrayAccessData)> hook(
            engineModule(), [&](SAFEARRAY* array, void** data) -> HRESULT {
                return calls++ == failing ? E_UNEXPECTED : hook.original(array, data);
            });
        expectError(E_UNEXPECTED, L"DrawIcon8", call(&colors.array, &bytes.array, icon.image->icon()));
    }
    EXPECT_EQ(S_OK, call(&colors.array, &bytes.array, nullptr));
    EXPECT_TRUE(twin.holds());
    EXPECT_EQ(S_OK, call(&manyColors.array, &manyBytes.array, icon.image->icon()));
    EXPECT_FALSE(twin.holds());
}

TEST_P(DrawIcon8, AsksOnlyForColorsThatShow) {
    constexpr OLE_COLOR bad = 0x800000FF;
    COLORREF unused = 0;
    for (const int index : {0, 7, 255}) {
        for (const int transparency : {0, 30, 99, 100, 200}) {
            SCOPED_TRACE(testing::Message() << "index " << index << ", transparency " << transparency);
            Random random(index);
            TwinImage icon(random, store, model::Kind::grey8, 9, 9);
            IconMaps maps;
            maps.colors[index] = bad;
            maps.transparency[index] = static_cast<BYTE>(transparency);
            BufferTwin twin(*this, random);
            const HRESULT hr = drawIcon(icon, maps);
            // A palettised buffer needs the colour of everything but the opaque, any other of everything
            // visible.
            if (format() == 8 ? transparency != 0 : transparency < 100) {
                expectError(OleTranslateColor(bad, nullptr, &unused), L"DrawIcon8", hr);
                EXPECT_TRUE(twin.holds());
            } else {
                EXPECT_EQ(S_OK, hr);
            }
        }
    }
}

} // namespace
} // namespace talx::test
