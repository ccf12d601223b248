// An owner that repaints parts of its layers, asked by the engine for the layers around: the buffer must then
// be as if everything had been drawn anew.
#include "tests/images/painting.h"
#include "tests/support/event_sink.h"

#include <list>

namespace talx::test {
namespace {

// An owner's three layers, of which the lowest covers everything.
struct Scene {
    explicit Scene(Random& r) : random(r) {
        for (int i = 0; i < 7; ++i) {
            layers[i < 2 ? 0 : 1 + i % 2].emplace_back(random, whats[i < 2 ? 0 : 1 + i % 2], false, kind());
        }
    }
    model::Kind kind() { return static_cast<model::Kind>(random.between(0, 3)); }

    // Replaces a drawing and tells where; sometimes it is only that a part was uncovered.
    model::Rect change(long layer) {
        const int left = random.between(-9, 39), top = random.between(-9, 29);
        if (random.oneIn(2)) {
            return {left, top, left + random.between(1, 30), top + random.between(1, 30)};
        }
        const model::Rect old = layers[layer].front().place();
        layers[layer].pop_front();
        const model::Rect now = layers[layer].emplace_back(random, whats[layer], false, kind()).place();
        return {std::min(old.left, now.left) - 1, std::min(old.top, now.top) - 1,
                std::max(old.right, now.right) + 1, std::max(old.bottom, now.bottom) + 1};
    }
    void draw(ITalRenderEngine2* engine, long layer, const model::Rect& r) {
        if (layer == 0) {
            EXPECT_EQ(S_OK, engine->Fill(0, r.left, r.top, r.right, r.bottom, RGB(20, 40, 60)));
        }
        for (Drawing& drawing : layers[layer]) {
            EXPECT_EQ(S_OK, drawing.draw(engine, r));
        }
    }
    void update(ITalRenderEngine2* engine, long layer, const model::Rect& r) {
        EXPECT_EQ(S_OK, engine->BeginLayerUpdate(layer, r.left, r.top, r.right, r.bottom));
        draw(engine, layer, r);
        EXPECT_EQ(S_OK, engine->EndLayerUpdate(layer, r.left, r.top, r.right, r.bottom));
    }

    static constexpr Drawing::What whats[] = {Drawing::image, Drawing::icon, Drawing::fill};
    Random& random;
    std::list<Drawing> layers[3];
};

struct Repaint : testing::TestWithParam<std::tuple<bool, int>> {};
INSTANTIATE_TEST_SUITE_P(Views, Repaint, everyView, viewName);

TEST_P(Repaint, OfAPartEqualsTheWhole) {
    const bool directDraw = std::get<0>(GetParam());
    const int format = std::get<1>(GetParam());
    const bool real = directDraw && format == realScreen; // where each repaint is slow
    runCases(real ? 1 : 25, [&](Random& random) {
        EventSink sink;
        EngineView view(directDraw, format);
        EngineView::initialize(view.engine.Get());
        Scene scene(random);
        sink.answer = [&](const LayerEvent& e) {
            for (long layer = e.first; layer <= e.last; ++layer) {
                scene.update(view.engine.Get(), layer, {e.left, e.top, e.right, e.bottom});
            }
        };
        EXPECT_EQ(S_OK, view.engine->put_Layers(3));
        EXPECT_EQ(S_OK, view.engine->AdviseRenderEvents(&sink));
        for (int i = 0; i < (real ? 4 : 12) && !testing::Test::HasFailure(); ++i) {
            const long layer = random.between(0, 2);
            scene.update(view.engine.Get(), layer, i == 0 ? everywhere : scene.change(layer));
            const auto fresh = view.newEngine();
            EngineView::initialize(fresh.Get());
            for (long whole = 0; whole < 3; ++whole) {
                scene.draw(fresh.Get(), whole, everywhere);
            }
            EXPECT_TRUE(view.values() == view.values(fresh.Get()))
                << "repaint " << i << ", of layer " << layer;
        }
    });
}

} // namespace
} // namespace talx::test
