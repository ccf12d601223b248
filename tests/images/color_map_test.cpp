// The colour-map and mask properties at their edges: arrays of every shape, colours that cannot be
// translated, failures. What valid colours show is compared with the model where images are drawn.
#include "tests/images/painting.h"

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;
using Words = std::vector<std::uint32_t>;

struct Property {
    std::wstring name;
    MapGetter get, put;
    HRESULT (Engine::*clear)();
};

const Property properties[] = {
    {L"Image8GreyWholeColorMap", &Engine::get_Image8GreyWholeColorMap, &Engine::put_Image8GreyWholeColorMap,
     &Engine::ClearImage8GreyColorMap},
    {L"Image16GreyColorMap", &Engine::get_Image16GreyColorMap, &Engine::put_Image16GreyColorMap,
     &Engine::ClearImage16GreyColorMap},
    {L"Image16RangeColorMap", &Engine::get_Image16RangeColorMap, &Engine::put_Image16RangeColorMap,
     &Engine::ClearImage16RangeColorMap},
};

// An array property of an engine, which needs no Initialize for it.
struct ColorMaps : testing::TestWithParam<int> {
    Words get() const { return readMap(engine.Get(), property.get); }
    HRESULT put(SAFEARRAY** array) const { return (engine.Get()->*property.put)(array); }
    HRESULT put(const Words& words) const {
        TestArray array(VT_I4, words);
        return put(&array.array);
    }

    const Property& property = properties[GetParam()];
    const ComPtr<Engine> engine = GdiView::newEngine();
    const Words some{0xFF123456, 0xFF000000, 0xFFFFFFFF, 0xFFFF0000};
};
INSTANTIATE_TEST_SUITE_P(Maps, ColorMaps, testing::Values(0, 1, 2));

TEST_P(ColorMaps, GiveBackElementsZeroToTheUpperBound) {
    EXPECT_EQ(Words{}, get());
    EXPECT_EQ(S_OK, put({0x00123456, 0x77000000, 0xFFFFFFFF, 0x80FF0000}));
    EXPECT_EQ(some, get());
    EXPECT_EQ(S_OK, put(get()));
    EXPECT_EQ(S_OK, engine->UnsetColorMaps());
    EXPECT_EQ(some, get());
    EXPECT_EQ(S_OK, (engine.Get()->*property.clear)());
    EXPECT_EQ(Words{}, get());
    for (const auto& [lower, count, taken] : {std::tuple{-3L, 10, 7},
                                              {5, 10, 10},
                                              {-10, 10, 0},
                                              {most - 9, 10, 10},
                                              {least, 4, 0},
                                              {1, 0, 0},
                                              {0, 70000, 70000}}) {
        TestArray array(VT_UI4, count, lower);
        Words expected;
        for (int i = 0; i < count; ++i) {
            static_cast<std::uint32_t*>(array.array->pvData)[i] = i;
            expected.push_back(0xFF000000u + i);
        }
        expected.resize(taken);
        EXPECT_EQ(S_OK, put(&array.array));
        EXPECT_EQ(expected, get()) << "from " << lower;
    }
}

TEST_P(ColorMaps, RefuseArraysOfAnotherShapeAndAreEmptyThen) {
    TestArray flat(VT_I4, 4, 0, 2), narrow(VT_I2, 4), bytes(VT_UI1, 4), wide(VT_R8, 4), locked(VT_I4, 4);
    SAFEARRAY* null = nullptr;
    ImportHook<HOOK(SafeArrayAccessData)> hook(engineModule(), [&](SAFEARRAY* array, void** data) -> HRESULT {
        return array == locked.array ? E_UNEXPECTED : hook.original(array, data);
    });
    for (SAFEARRAY** array : {&null, &flat.array, &narrow.array, &bytes.array, &wide.array, &locked.array}) {
        EXPECT_EQ(S_OK, put(some));
        expectError(E_INVALIDARG, L"put_" + property.name, put(array));
        EXPECT_EQ(Words{}, get());
    }
    EXPECT_EQ(S_OK, put(some));
    expectBare(E_POINTER, put(nullptr));
    EXPECT_EQ(some, get()) << "checked before anything is emptied";
}

TEST_P(ColorMaps, ReportPlatformFailures) {
    EXPECT_EQ(S_OK, put(some));
    for (const HRESULT hr : {E_OUTOFMEMORY, E_UNEXPECTED}) {
        SAFEARRAY* array = reinterpret_cast<SAFEARRAY*>(1);
        const ImportHook<HOOK(SafeArrayCopy)> hook(engineModule(),
                                                   [hr](SAFEARRAY*, SAFEARRAY**) { return hr; });
        expectError(hr, L"get_" + property.name + L" ", (engine.Get()->*property.get)(&array));
        EXPECT_EQ(nullptr, array);
    }
    EXPECT_EQ(some, get());

    FailurePlan plan;
    const FailingImport<"malloc", void*(std::size_t)> memory(engineModule(), plan);
    EXPECT_LT(0, plan.sweep([&] {
        if (const HRESULT hr = put(Words(300, 0xFF0000FF)); hr != S_OK) {
            expectError(E_OUTOFMEMORY, L"put_" + property.name, hr);
            const Words left = get(); // what was appended so far, of which the 8-bit map shows nothing
            EXPECT_LT(left.size(), GetParam() ? 300u : 1u);
            EXPECT_EQ(Words(left.size(), 0xFF0000FF), left);
        }
    }));
}

TEST(GreyMap8, RefusesAColorThatCannotBeTranslated) {
    const auto engine = GdiView::newEngine();
    OLE_COLOR color = 0;
    for (const OLE_COLOR bad : {0x800000FFu, 0x03000000u}) {
        expectError(E_INVALIDARG, L"Unable to translate color.", engine->put_Image8GreyColorMap(200, bad));
        EXPECT_EQ(S_OK, engine->get_Image8GreyColorMap(200, &color));
        EXPECT_EQ(OLE_COLOR{RGB(200, 200, 200)}, color);
    }
}

TEST(VisiblePixelMask, IsKeptAsGiven) {
    const auto engine = GdiView::newEngine();
    for (const auto& [put, got, word] :
         {std::tuple{0, 0, 0u}, {-1, 1, 0x800000FFu}, {0x100, 1, 1u}, {0, 0, ~0u}}) {
        VARIANT_BOOL enabled = 5;
        OLE_COLOR color = 5;
        EXPECT_TRUE(word == 0 || engine->put_VisiblePixelMaskEnable(static_cast<VARIANT_BOOL>(put)) == S_OK);
        EXPECT_TRUE(word == 0 || engine->put_VisiblePixelMaskColor(word) == S_OK);
        EXPECT_EQ(S_OK, engine->get_VisiblePixelMaskEnable(&enabled));
        EXPECT_EQ(S_OK, engine->get_VisiblePixelMaskColor(&color));
        EXPECT_EQ(got, enabled);
        EXPECT_EQ(word, color);
    }
}

} // namespace
} // namespace talx::test
