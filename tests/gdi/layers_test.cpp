// Layers as the owner sees them: the events around an update, filled rectangles, and the draw context.
#include "tests/gdi/gdi_view.h"
#include "tests/support/event_sink.h"

namespace talx::test {
namespace {

struct GdiLayers : testing::Test, GdiView {
    GdiLayers() {
        EXPECT_EQ(S_OK, initialize());
        EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink));
        EXPECT_EQ(S_OK, engine->put_Layers(3));
    }
    // Begins and ends an update and returns how many events that raised.
    std::size_t update(long layer, ITalRenderEngine* on) {
        const std::size_t before = sink.events.size();
        EXPECT_EQ(S_OK, on->BeginLayerUpdate(layer, 0, 0, 9, 9));
        EXPECT_EQ(S_OK, on->EndLayerUpdate(layer, 0, 0, 9, 9));
        return sink.events.size() - before;
    }
    std::size_t update(long layer) { return update(layer, engine.Get()); }
    EventSink sink;
};

TEST_F(GdiLayers, AskTheOwnerForTheLayersBelowAndAbove) {
    using Events = std::vector<LayerEvent>;
    struct Case {
        long layers, layer;
        std::array<long, 4> rectangle;
        Events begin, end;
    } const cases[] = {
        {3, 2, {10, 10, 20, 20}, {{0, 1, 10, 10, 20, 20}}, {}},
        {3, 1, {10, 10, 20, 20}, {{0, 0, 10, 10, 20, 20}}, {{2, 2, 10, 10, 20, 20}}},
        {3, 0, {-5, -5, 5, 5}, {}, {{1, 2, 0, 0, 5, 5}}},
        {3, 1, {least, least, most, most}, {{0, 0, 0, 0, 61, 47}}, {{2, 2, 0, 0, 61, 47}}},
        {3, 3, {0, 0, 9, 9}, {}, {}},
        {3, -1, {0, 0, 9, 9}, {}, {}},
        {3, most, {0, 0, 9, 9}, {}, {}},
        {3, 1, {61, 0, 70, 9}, {}, {}},
        {3, 1, {9, 9, 3, 3}, {}, {}},
        {-1, 0, {0, 0, 9, 9}, {}, {}},
        {least, 1, {0, 0, 9, 9}, {}, {}},
        {most, most - 1, {0, 0, 9, 9}, {{0, most - 2, 0, 0, 9, 9}}, {}},
    };
    for (const auto& [layers, layer, r, begin, end] : cases) {
        SCOPED_TRACE(testing::Message() << "layer " << layer << " of " << layers << " from x " << r[0]);
        long count = 0;
        EXPECT_EQ(S_OK, engine->put_Layers(layers));
        EXPECT_EQ(S_OK, engine->get_Layers(&count));
        EXPECT_EQ(layers, count);
        sink.result = layer % 2 ? E_FAIL : S_OK; // of no concern to the engine
        EXPECT_EQ(S_OK, engine->BeginLayerUpdate(layer, r[0], r[1], r[2], r[3]));
        EXPECT_EQ(begin, std::exchange(sink.events, {}));
        EXPECT_EQ(S_OK, engine->EndLayerUpdate(layer, r[0], r[1], r[2], r[3]));
        EXPECT_EQ(end, std::exchange(sink.events, {}));
    }
}

TEST_F(GdiLayers, RaiseNothingWhileTheOwnerAnswers) {
    const auto other = newEngine();
    EventSink second;
    EXPECT_EQ(S_OK, other->put_Layers(3));
    EXPECT_EQ(S_OK, other->AdviseRenderEvents(&second));
    EXPECT_EQ(0u, update(1, other.Get()) + second.events.size())
        << "without an extent there is nothing to redraw";
    EXPECT_EQ(S_OK, other->Initialize(window.value(), 20, 20));
    sink.answer = [&](const LayerEvent&) {
        EXPECT_EQ(0u, update(0) + update(1) + update(2) + update(1, other.Get()));
        EXPECT_EQ(S_OK, engine->Fill(1, 0, 0, 9, 9, white));
    };
    EXPECT_EQ(2u, update(1));
    EXPECT_EQ(4u, second.events.size()) << "every engine has a guard of its own";
    EXPECT_EQ(2u, update(1)) << "the guard must not stay";

    // A sink may resize the view, change the layers or withdraw while it is called.
    sink.answer = [&](const LayerEvent&) {
        EXPECT_EQ(S_OK, engine->SetExtent(5, 5));
        EXPECT_EQ(S_OK, engine->put_Layers(2));
        EXPECT_EQ(S_OK, engine->UnAdvise());
    };
    EXPECT_EQ(1u, update(1));
    EXPECT_EQ(0u, update(1));
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink));
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&second));
    EXPECT_EQ(0u, update(1)) << "the second sink replaces the first";
    EXPECT_EQ(9u, second.events.size());
    EXPECT_EQ(0, sink.references + second.references);
}

struct GdiFill : testing::TestWithParam<int>, GdiView {
    GdiFill() : GdiView(GetParam()) { EXPECT_EQ(S_OK, initialize()); }
};
INSTANTIATE_TEST_SUITE_P(Screens, GdiFill, everyScreen, testing::PrintToStringParamName());

TEST_P(GdiFill, PaintsTheClippedRectangleOnly) {
    constexpr OLE_COLOR system = 0x80000000;
    std::vector<COLORREF> expected(width * height, 0);
    for (const auto& [r, ole] :
         {std::pair<RECT, OLE_COLOR>{{0, 0, width, height}, grey},
          {{3, 4, 10, 12}, white},
          {{least, 20, most, 22}, black},
          {{50, -9, 999, 3}, system | COLOR_WINDOWTEXT},
          {{20, 30, 40, 35}, system | COLOR_BTNFACE},
          {{60, 46, 61, 47}, RGB(255, 0, 255)},
          {{61, 0, 99, 47}, white},
          {{9, 9, 2, 2}, white},
          {{40, 40, 50, 40}, system | 255}}) { // nothing to fill: the colour is not looked at
        EXPECT_EQ(S_OK, engine->Fill(-3, r.left, r.top, r.right, r.bottom, ole));
        COLORREF color = 0;
        OleTranslateColor(ole, format() == 8 ? palette() : nullptr, &color);
        if (format() == 8) {
            PALETTEENTRY nearest{};
            GetPaletteEntries(palette(), GetNearestPaletteIndex(palette(), color & white), 1, &nearest);
            color = RGB(nearest.peRed, nearest.peGreen, nearest.peBlue);
        }
        for (int i = 0; i < width * height; ++i) {
            expected[i] = PtInRect(&r, {i % width, i / width}) ? color & precisionOf(format()) : expected[i];
        }
        EXPECT_EQ(expected, colors()) << "at " << r.left << ", " << r.top;
    }
    for (const OLE_COLOR bad : {0x800000FFu, 0x03000000u, 0xFFFFFFFFu}) {
        expectError(E_INVALIDARG, L"Unable to translate color.", engine->Fill(0, 0, 0, 9, 9, bad));
    }
    EXPECT_EQ(expected, colors());
}

TEST_F(GdiLayers, HaveOneContextWithoutAClippingRegion) {
    const HRGN region = CreateRectRgn(0, 0, 0, 0), small = CreateRectRgn(1, 1, 2, 2);
    for (const long layer : {0L, 7L, least}) {
        __int64 value = 0;
        const HDC dc = context();
        SelectClipRgn(dc, small);
        EXPECT_EQ(S_OK, engine->GetDrawContext(layer, &value));
        EXPECT_EQ(dc, reinterpret_cast<HDC>(value));
        EXPECT_EQ(0, GetClipRgn(dc, region));
        SelectClipRgn(dc, small);
        EXPECT_EQ(S_OK, engine->ReleaseDrawContext(layer, layer));
        EXPECT_EQ(0, GetClipRgn(dc, region));
    }
    DeleteObject(region);
    DeleteObject(small);
    expectError(E_POINTER, L"GetDrawContext", engine->GetDrawContext(0, nullptr));
    SetPixelV(context(), 60, 46, white);
    EXPECT_EQ(white & precisionOf(format()), colors().back());
}

} // namespace
} // namespace talx::test
