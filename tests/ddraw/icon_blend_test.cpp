// Blending of icons by Direct3D, and the way back to the software blend. What Direct3D makes of an icon is
// compared on the real screen.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

struct BlendingView : DdrawView {
    BlendingView() : DdrawView(32, {}) { EXPECT_EQ(S_OK, initialize()); }

    // Draws over the filled buffer, and then again with Direct3D failing: what is seen must be what the
    // software blend makes of it, to the last bit where it took over, and but for its rounding by Direct3D.
    void draw(TestIcon& icon, double x, double y) {
        const auto drawOnce = [&] {
            EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, 100, 100, RGB(51, 102, 153)));
            display->takeCalls();
            EXPECT_EQ(S_OK, icon.draw(engine, x, y));
            return buffer().memory;
        };
        const auto seen = drawOnce();
        const Calls calls = display->calls, refused = std::exchange(display->refuse, {"device.BeginScene"});
        const auto expected = drawOnce();
        EXPECT_TRUE(inSoftware());
        display->calls = calls;
        display->refuse = refused;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_NEAR(expected[i], seen[i], inSoftware() ? 0 : 2) << i;
        }
    }
    [[nodiscard]] bool inSoftware() const { return display->called("buffer.Lock"); }
};

// Every step may be refused: the software blend draws it whole, or Direct3D has another way. A device that
// cannot be made, or that does not end a scene, is given up until the view is resized.
TEST(DdrawIconBlend, FailureAtAnyStepLeavesItToTheSoftwareBlend) {
    TestIcon icon;
    BlendingView clean;
    clean.draw(icon, 2.9, 3.1);
    EXPECT_TRUE(clean.display->called("device.DrawPrimitive 5 3 4 5"));
    int fallbacks = 0;
    for (const std::string& step : Calls(clean.display->calls)) {
        SCOPED_TRACE(step);
        BlendingView view;
        view.display->refuse = {step};
        for (const bool again : {false, true}) {
            view.draw(icon, 2.9, 3.1);
            fallbacks += view.inSoftware();
            const bool givenUp = step.starts_with("direct3d.") || step == "device.EndScene";
            EXPECT_FALSE(again && givenUp && view.display->called(step)) << "asked again";
            EXPECT_TRUE(again || step != "device.EndScene" || view.display->called("~device"));
        }
        view.display->refuse.clear();
        view.engine->SetExtent(1, 1);
        view.engine->SetExtent(DdrawView::width, DdrawView::height);
        view.draw(icon, 2.9, 3.1);
        EXPECT_FALSE(view.inSoftware());
    }
    EXPECT_GT(fallbacks, 50);
}

TEST(DdrawIconBlend, DevicesInTurn) {
    BlendingView view;
    TestIcon icon(5), huge(80);
    view.draw(icon, 35, -2.5);
    EXPECT_TRUE(view.display->called("directdraw.CreateSurface texture (0,0,32,32) caps 5000"))
        << "video memory";
    EXPECT_EQ(S_OK, view.engine->SetExtent(100, 30));
    EXPECT_TRUE(view.display->called("~texture") && view.display->called("~device"));
    view.display->refuse = {"direct3d.CreateDevice 8"};
    view.draw(icon, 0, 0);
    EXPECT_EQ((Calls{"direct3d.CreateDevice 84e63de0 buffer", "direct3d.CreateDevice 881949a1 buffer",
                     "direct3d.CreateDevice a4665c60 buffer"}),
              Calls(view.display->calls.begin() + 1, view.display->calls.begin() + 4));
    EXPECT_TRUE(view.display->called("directdraw.CreateSurface texture (0,0,32,32) caps 1800"))
        << "system memory";
    EXPECT_FALSE(view.inSoftware());
    view.draw(huge, 1, -3); // larger than the device's textures
    EXPECT_TRUE(view.inSoftware());
}

// Only an icon that looks otherwise, or a texture that is lost, is written to a texture.
TEST(DdrawIconBlend, TexturesAreFilledOnlyWhenTheyHaveTo) {
    BlendingView view;
    auto& textures = view.display->textures;
    TestIcon icon, other(5), large(36);
    const auto expectFilled = [&](bool filled, TestIcon& drawn, double y) {
        view.draw(drawn, 3, y);
        EXPECT_EQ(filled, view.display->called("texture.Unlock"));
        EXPECT_FALSE(view.inSoftware());
    };
    for (BYTE* const changed :
         {icon.pixels.data(), icon.pixels.data() + 399, static_cast<BYTE*>(icon.colors.array->pvData) + 20,
          static_cast<BYTE*>(icon.transparencies.array->pvData) + 9}) {
        ++*changed;
        expectFilled(true, icon, 1);
        expectFilled(false, icon, 4);
    }
    expectFilled(true, other, 1);
    expectFilled(false, icon, 1);
    expectFilled(true, icon, 15); // less of it is seen
    expectFilled(false, other, 2);
    EXPECT_EQ(4u, textures.size());
    view.buffer().lost = true;
    std::ranges::for_each(textures, [](FakeObject* texture) { texture->lost = true; });
    expectFilled(true, other, 1);
    expectFilled(true, large, 1);
    EXPECT_TRUE(view.display->called("directdraw.CreateSurface texture (0,0,64,64) caps 5000"));
    expectFilled(false, large, 1);
    view.display->refuse = {"texture.Lock"};
    ++other.pixels[0];
    view.draw(other, 3, 1);
    view.display->refuse.clear();
    view.draw(other, 3, 1); // not with what was in the texture
}

} // namespace
} // namespace talx::test
