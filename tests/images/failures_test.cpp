// Drawing that fails or has nothing to draw: images that fail at any step, arrays of every shape, colours
// that stand for none. The buffer stays as it was, and everything is given back.
#include "tests/images/painting.h"

#include <set>

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;
using Kind = model::Kind;
using Words = std::vector<std::uint32_t>;

const std::tuple<std::wstring, MapGetter, MapGetter> maps[] = {
    {L"Image8GreyWholeColorMap", &Engine::get_Image8GreyWholeColorMap, &Engine::put_Image8GreyWholeColorMap},
    {L"Image16GreyColorMap", &Engine::get_Image16GreyColorMap, &Engine::put_Image16GreyColorMap},
    {L"Image16RangeColorMap", &Engine::get_Image16RangeColorMap, &Engine::put_Image16RangeColorMap}};

struct ImageFailures : ImageTest {
    Random random{1};
};
INSTANTIATE_TEST_SUITE_P(Views, ImageFailures,
                         testing::Values(std::tuple(false, 8), std::tuple(false, 24), std::tuple(true, 8),
                                         std::tuple(true, 16)),
                         viewName);

TEST_P(ImageFailures, AreReportedAsTheyAre) {
    constexpr HRESULT none = S_FALSE; // no failure
    const struct {
        ImageStep step;
        std::string kinds; // whose images go through it
        // What comes of a step that fails with ownFailure, or succeeds with null.
        HRESULT failing, yieldingNothing;
    } rows[] = {{ImageStep::width, "0123", ownFailure, none},
                {ImageStep::height, "0123", ownFailure, none},
                {ImageStep::depthCode, "2", E_FAIL, none},
                {ImageStep::plane, "1", ownFailure, noPixelData},
                {ImageStep::source, "012", E_FAIL, none},
                {ImageStep::access, "0123", ownFailure, noPixelData},
                {ImageStep::data, "0123", noPixelData, noPixelData},
                {ImageStep::stride, "0123", noPixelData, none}};
    for (const auto& [step, kinds, failing, yieldingNothing] : rows) {
        for (int i = 0; i < static_cast<int>(kinds.size()) * 18; ++i) {
            const auto kind = static_cast<Kind>(kinds[i / 18] - '0');
            const int plane = i / 6 % 3, way = i / 2 % 3; // to fail, to fail but to yield, to yield null
            const double scale = 1 + i % 2;
            const bool noMask = step == ImageStep::access && kind == Kind::range16 && plane > 0 && way == 2;
            const HRESULT expected = noMask ? none : way == 2 ? yieldingNothing : failing;
            TwinImage picture(random, store, kind, 20, 20);
            const std::size_t planes = step < ImageStep::plane ? 1 : picture.planes.size();
            if (static_cast<std::size_t>(plane) >= planes || expected == none) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << "step " << static_cast<int>(step) << ", " << i);
            BufferTwin twin(*this, random);
            picture.image->fault = {step, way == 2 ? S_OK : ownFailure, plane, way == 1, {}};
            expectFailure(expected, draw(picture.image->image(), scale));
            if (kind == Kind::grey8) { // what an icon's query answers is told as it is
                expectFailure(step == ImageStep::source ? ownFailure : expected,
                              drawIcon(*picture.image, scale), L"DrawIcon8");
            }
            EXPECT_TRUE(twin.holds());
            picture.image->fault = {};
            EXPECT_EQ(S_OK, draw(picture.image->image(), scale));
            EXPECT_NE(kind == Kind::grey8 || format() != 8, bool(twin.holds()));
        }
    }
}

TEST_P(ImageFailures, NothingToDrawIsNoFailure) {
    const ImagePlane plane{store.planes[0].begin(), 20};
    TestImage empty[] = {{ImageKind::none, 20, 20, {}},         {ImageKind::grey8, -20, -20, {plane}},
                         {ImageKind::color, 0, 20, {}},         {ImageKind::grey16, 20, least, {}},
                         {ImageKind::range16, least, most, {}}, {ImageKind::grey8, 0, 0, {plane}}};
    TestImage image(ImageKind::grey8, 20, 20, {plane});
    BufferTwin twin(*this, random);
    for (const double scale : {1.0, 2.0, -1.0, 0.0, 0.01}) {
        expectBare(S_OK, draw(nullptr, scale));
        for (TestImage& nothing : empty) {
            expectBare(S_OK, draw(nothing.image(), scale));
            EXPECT_EQ(0, nothing.accesses);
        }
        expectBare(S_OK, drawIcon(empty[5], scale));
        if (scale < 0.1) {
            expectBare(S_OK, draw(image.image(), scale));
            expectBare(S_OK, drawIcon(image, scale));
        }
    }
    expectBare(S_OK, engine->DrawImage(0, image.image(), 0, 0, 1, width, 0, most, most, 0));
    expectBare(S_OK, engine->DrawImage(0, image.image(), -20, 0, 1, least, least, most, most, 0));
    expectBare(S_OK, engine->DrawIcon8(0, image.icon(), nullptr, nullptr, 0, 0, 1, 9, 9, 9, 9));
    EXPECT_EQ(0, image.accesses);
    EXPECT_TRUE(twin.holds());
}

TEST_P(ImageFailures, AnImageOfTwoKindsIsDrawnAsTheFirst) {
    std::vector<ImagePlane> planes;
    for (const FencedMemory& memory : store.planes) {
        random.fill(memory.begin(), 800);
        planes.push_back({memory.begin(), 40});
    }
    for (int i = 0; i < 16; ++i) {
        const auto first = static_cast<ImageKind>(1 + i / 4), second = static_cast<ImageKind>(1 + i % 4);
        const auto drawn = [&](TestImage& image) {
            EXPECT_EQ(S_OK, engine->Fill(0, least, least, most, most, white));
            EXPECT_EQ(S_OK, draw(image.image()));
            return values();
        };
        TestImage one(first, 20, 20, planes), two(second, 20, 20, planes);
        two.alsoKind = first;
        EXPECT_TRUE(first > second || drawn(one) == drawn(two)) << i;
    }
}

// An image may come from elsewhere, and the window be resized while it is asked: what is left of the view
// shows it, if anything is.
TEST_P(ImageFailures, DrawingOutlivesTheBufferThatItBeganWith) {
    for (int i = 0; i < 2 * 8 * 4 * 4; ++i) {
        const long side = i < 128 ? 3 : 0;
        TwinImage picture(random, store, static_cast<Kind>(i / 4 % 4), width, height);
        const auto drawing = [&] {
            TestImage& image = *picture.image;
            const double scale = i % 2 ? 0.9 : 1;
            return i % 16 / 2 == 1 ? drawIcon(image, scale) : draw(image.image(), scale);
        };
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        bool resized = false;
        picture.image->fault = {static_cast<ImageStep>(1 + i / 16 % 8), S_OK, 0, false, [&] {
                                    resized = true;
                                    EXPECT_TRUE(engine->SetExtent(side, side) == S_OK || side == 0);
                                    takeErrorInfo();
                                }};
        EXPECT_EQ(S_OK, drawing());
        if (resized && side == 0) {
            continue;
        }
        const auto shown = values();
        picture.image->fault = {};
        EXPECT_EQ(S_OK, drawing());
        EXPECT_TRUE(!resized || (shown.size() == 9 && shown == values())) << i;
    }
}

// An image may draw another one while it is drawn, and come out smaller than it has said. The memory for
// scaling is kept until the view is resized.
TEST_P(ImageFailures, DrawingOutlivesWhatTheImageDoes) {
    std::set<void*> kept;
    ImportHook<"malloc", void*(std::size_t)> get(engineModule(), [&](std::size_t size) {
        return size < 900 ? get.original(size) : *kept.insert(get.original(size)).first;
    });
    ImportHook<"free", void(void*)> giveBack(engineModule(), [&](void* memory) {
        kept.erase(memory);
        giveBack.original(memory);
    });
    const ImageStore others;
    TwinImage outer(random, store, Kind::grey8, 20, 20), inner(random, others, Kind::grey8, 20, 20);
    TestImage& image = *outer.image;
    const auto drawn = [&](ImageStep step, double scale, const std::function<void()>& does) {
        image.fault = {step, S_OK, 0, false, does};
        EXPECT_EQ(S_OK, draw(image.image(), scale));
        return values();
    };
    const auto nested = drawn(ImageStep::unlock, 1.5, [&] { draw(inner.image->image(), 1.5); });
    EXPECT_TRUE(nested == drawn(ImageStep::never, 1.5, {}));
    const auto smaller = drawn(ImageStep::access, 1, [&] { image.width = 7; });
    EXPECT_TRUE(std::equal(smaller.begin() + 7, smaller.begin() + width, nested.begin() + 7));
    const std::size_t before = kept.size();
    engine->SetExtent(9, 9);
    EXPECT_LT(kept.size(), before);
}

// What becomes of an array as a colour map, as the colours of an icon and as its transparencies.
TEST_P(ImageFailures, ArraysOfEveryShape) {
    enum Special { usual, locked, withoutMemory, null };
    const struct {
        VARTYPE type;
        int count;
        LONG lower;
        UINT dimensions;
        Special special;
        int mapEntries; // or none of them, and E_INVALIDARG
        HRESULT colors, transparencies;
    } rows[] = {{VT_I4, 256, 0, 1, usual, 256, S_OK, S_OK},
                {VT_UI4, 300, -7, 1, usual, 293, S_OK, S_OK},
                {VT_I4, 256, least, 1, usual, 0, S_OK, S_OK},
                {VT_I4, 70000, 5, 1, usual, 70000, S_OK, S_OK},
                {VT_I4, 10, -10, 1, usual, 0, E_INVALIDARG, E_INVALIDARG},
                {VT_I4, 255, 0, 1, usual, 255, E_INVALIDARG, S_OK},
                {VT_I4, 0, 1, 1, usual, 0, E_INVALIDARG, E_INVALIDARG},
                {VT_UI1, 256, 0, 1, usual, 64, E_INVALIDARG, S_OK}, // as many words as it has bytes for
                {VT_UI1, 255, 0, 1, usual, 63, E_INVALIDARG, E_INVALIDARG},
                {VT_I2, 256, 0, 1, usual, 128, E_INVALIDARG, S_OK},
                {VT_R8, 256, 0, 1, usual, 256, S_OK, S_OK},
                {VT_I4, 256, 0, 2, usual, 256, S_OK, S_OK},
                {VT_UI1, 15, 0, 2, usual, 15, E_INVALIDARG, E_INVALIDARG},
                {VT_I4, 256, 0, 1, locked, -1, E_UNEXPECTED, E_UNEXPECTED},
                {VT_I4, 256, 0, 1, withoutMemory, -1, E_INVALIDARG, E_INVALIDARG},
                {VT_I4, 256, 0, 1, null, -1, E_POINTER, E_POINTER}};
    const Words some{0xFF123456, 0xFF000000, 0xFFFFFFFF, 0xFFFF0000};
    TestArray words(VT_I4, some), colors(VT_I4, 256), transparencies(VT_UI1, 256);
    TwinImage icon(random, store, Kind::grey8, 9, 9);
    const auto expectDrawn = [&](HRESULT expected, SAFEARRAY** first, SAFEARRAY** second) {
        BufferTwin twin(*this, random);
        const HRESULT hr = engine->DrawIcon8(0, icon.image->icon(), first, second, 0, 0, 1, 0, 0, 9, 9);
        expected == S_OK ? expectBare(S_OK, hr) : expectFailure(expected, hr, L"DrawIcon8");
        EXPECT_EQ(expected == S_OK, !twin.holds());
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        TestArray array(row.type, row.count, row.lower, row.dimensions);
        SAFEARRAY copy = *array.array;
        copy.cLocks = row.special == locked ? 0xFFFF : 0;
        copy.pvData = row.special == withoutMemory ? nullptr : copy.pvData;
        SAFEARRAY* passed = row.special == usual ? array.array : row.special == null ? nullptr : &copy;
        for (const auto& [name, get, put] : maps) {
            EXPECT_EQ(S_OK, (engine.Get()->*put)(&words.array));
            const HRESULT hr = (engine.Get()->*put)(&passed);
            row.mapEntries < 0 ? expectFailure(E_INVALIDARG, hr, L"put_" + name) : expectBare(S_OK, hr);
            EXPECT_EQ(std::max(row.mapEntries, 0), static_cast<int>(readMap(engine.Get(), get).size()));
        }
        expectDrawn(row.colors, &passed, &transparencies.array);
        expectDrawn(row.transparencies, &colors.array, &passed);
    }
    expectDrawn(E_POINTER, nullptr, &transparencies.array);
    expectDrawn(E_POINTER, &colors.array, nullptr);
}

// An opaque entry of a palettised buffer and an invisible one of any other need no colour; and the first
// colours are compared with -1 on the one and with 0 on the others, which count as translated already.
TEST_P(ImageFailures, OnlyColorsThatShowMustStandForOne) {
    const bool palettised = format() == 8;
    COLORREF unused = 0;
    for (const OLE_COLOR bad : {0x800000FFu, 0xFFFFFFFFu}) {
        for (const int i : {0, 128, 255}) {
            for (const int percent : {0, 30, 99, 100, 200}) {
                SCOPED_TRACE(testing::Message() << std::hex << bad << " at " << i << ", " << percent);
                Drawing icon(random, Drawing::icon, false);
                icon.iconX = icon.iconY = 0;
                icon.scale = 1;
                std::fill_n(icon.words(), 256, 0);
                std::fill_n(icon.bytes(), 256, BYTE{0});
                icon.words()[i] = bad;
                icon.bytes()[i] = static_cast<BYTE>(percent);
                BufferTwin twin(*this, random);
                const HRESULT hr = icon.draw(engine.Get(), everywhere);
                if (palettised ? percent != 0 && bad + 1 != 0 : percent < 100) {
                    expectFailure(OleTranslateColor(bad, nullptr, &unused), hr, L"DrawIcon8");
                } else {
                    expectBare(S_OK, hr);
                    icon.draw(twin.buffer, everywhere, {}, 0, [](model::Color) { return std::uint8_t{0}; });
                }
                EXPECT_TRUE(twin.holds());
            }
        }
    }
    expectFailure(E_INVALIDARG, engine->put_Image8GreyColorMap(200, 0x03000000),
                  L"Unable to translate color.");
}

} // namespace
} // namespace talx::test
