// Layers as the owner sees them: the events around an update, and the draw context.
#include "tests/gdi/gdi_view.h"
#include "tests/support/event_sink.h"

namespace talx::test {
namespace {

TEST(GdiLayers, AskTheOwnerForTheLayersBelowAndAbove) {
    using Events = std::vector<LayerEvent>;
    struct Case {
        long layers, layer;
        std::array<long, 4> rectangle;
        Events begin, end;
    } const cases[] = {
        {3, 2, {10, 10, 20, 20}, {{0, 1, 10, 10, 20, 20}}, {}},
        {3, 0, {-5, -5, 5, 5}, {}, {{1, 2, 0, 0, 5, 5}}},
        {3, 1, {least, least, most, most}, {{0, 0, 0, 0, 40, 30}}, {{2, 2, 0, 0, 40, 30}}},
        {3, 3, {0, 0, 9, 9}, {}, {}},
        {3, -1, {0, 0, 9, 9}, {}, {}},
        {3, most, {0, 0, 9, 9}, {}, {}},
        {3, 1, {40, 0, 70, 9}, {}, {}},
        {3, 1, {9, 9, 3, 3}, {}, {}},
        {-1, 0, {0, 0, 9, 9}, {}, {}},
        {least, 1, {0, 0, 9, 9}, {}, {}},
        {most, most - 1, {0, 0, 9, 9}, {{0, most - 2, 0, 0, 9, 9}}, {}},
    };
    EventSink sink, replaced;
    GdiView view;
    const auto& engine = view.engine;
    EXPECT_EQ(S_OK, view.initialize() | engine->AdviseRenderEvents(&replaced));
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink));
    sink.answer = [&](const LayerEvent&) { // nothing is raised while the owner answers
        EXPECT_EQ(S_OK, engine->BeginLayerUpdate(1, 0, 0, 9, 9) | engine->EndLayerUpdate(0, 0, 0, 9, 9));
    };
    for (const auto& [layers, layer, r, begin, end] : cases) {
        SCOPED_TRACE(testing::Message() << "layer " << layer << " of " << layers << " from x " << r[0]);
        EXPECT_EQ(S_OK, engine->put_Layers(layers));
        sink.result = layer % 2 ? E_FAIL : S_OK; // of no concern to the engine
        EXPECT_EQ(S_OK, engine->BeginLayerUpdate(layer, r[0], r[1], r[2], r[3]));
        EXPECT_EQ(begin, std::exchange(sink.events, {}));
        EXPECT_EQ(S_OK, engine->EndLayerUpdate(layer, r[0], r[1], r[2], r[3]));
        EXPECT_EQ(end, std::exchange(sink.events, {}));
    }
    EXPECT_EQ(S_OK, engine->UnAdvise() | engine->BeginLayerUpdate(1, 0, 0, 9, 9));
    EXPECT_EQ(0u, replaced.events.size() + sink.events.size());
    sink.answer = [&](const LayerEvent&) {
        view.engine.Reset();
        EXPECT_EQ(S_FALSE, exported<HRESULT WINAPI()>(engineModule(), "DllCanUnloadNow")())
            << "in its method";
    };
    EXPECT_EQ(S_OK, engine->AdviseRenderEvents(&sink) | engine->BeginLayerUpdate(1, 0, 0, 9, 9));
    EXPECT_FALSE(engine);
}

TEST(GdiLayers, HaveOneContextWithoutAClippingRegion) {
    const GdiView view;
    EXPECT_EQ(S_OK, view.initialize());
    const HDC dc = view.context();
    const HRGN region = CreateRectRgn(1, 1, 2, 2);
    for (const long layer : {0L, 7L, least}) {
        SelectClipRgn(dc, region);
        EXPECT_EQ(dc, view.context(layer));
        EXPECT_EQ(0, GetClipRgn(dc, region));
        SelectClipRgn(dc, region);
        EXPECT_EQ(S_OK, view.engine->ReleaseDrawContext(layer, layer));
        EXPECT_EQ(0, GetClipRgn(dc, region));
    }
    DeleteObject(region);
    expectError(E_POINTER, L"GetDrawContext", view.engine->GetDrawContext(0, nullptr));
}

} // namespace
} // namespace talx::test
