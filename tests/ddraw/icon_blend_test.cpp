// Blending of icons by Direct3D, and the way back to the software blend. What Direct3D makes of an icon is
// compared on the real screen.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

struct BlendingView : DdrawView {
    explicit BlendingView(const Calls& refuse = {}) : DdrawView(32, refuse) {
        EXPECT_EQ(S_OK, initialize());
        restart();
    }
    void restart() {
        EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, 100, 100, RGB(51, 102, 153)));
        display->takeCalls();
    }
    // The buffer must be exactly as Direct3D leaves it.
    void expectDrawnByDirect3D(const RECT& icon) {
        EXPECT_FALSE(display->called("buffer.Lock"));
        for (LONG i = 0; i < width * height; ++i) {
            const POINT p{i % width, i / width};
            EXPECT_EQ(PtInRect(&icon, p) ? FakeDisplay::drawnColor : 0x336699, buffer().pixel(p.x, p.y))
                << p.x << ", " << p.y;
        }
    }
};

// Every step may be refused: what is seen is then what the software blend makes of it, whole, until the view
// is resized; or Direct3D has another way.
TEST(DdrawIconBlend, FailureAtAnyStepLeavesItToTheSoftwareBlend) {
    constexpr RECT place{2, 3, 22, 23};
    TestIcon icon;
    BlendingView software({"directdraw.QueryInterface"}), hardware;
    EXPECT_EQ(S_OK, icon.draw(software.engine, 2.9, 3.1));
    EXPECT_EQ(S_OK, icon.draw(hardware.engine, 2.9, 3.1));
    EXPECT_TRUE(hardware.display->called("device.DrawPrimitive 5 3 4 5"));
    int fallbacks = 0;
    for (const std::string& step : hardware.display->calls) {
        SCOPED_TRACE(step);
        BlendingView view;
        view.display->refuse = {step};
        EXPECT_EQ(S_OK, icon.draw(view.engine, 2.9, 3.1));
        if (view.display->called("buffer.Lock")) {
            ++fallbacks;
            EXPECT_EQ(software.buffer().memory, view.buffer().memory) << "something else was drawn before";
            view.display->refuse.clear();
            view.engine->SetExtent(1, 1);
            view.engine->SetExtent(DdrawView::width, DdrawView::height);
            view.restart();
            EXPECT_EQ(S_OK, icon.draw(view.engine, 2.9, 3.1));
        }
        view.expectDrawnByDirect3D(place);
    }
    EXPECT_GT(fallbacks, 25);
}

TEST(DdrawIconBlend, DeviceAndTextureAreKeptWhileTheySuit) {
    BlendingView view;
    FakeDisplay& display = *view.display;
    TestIcon icon, small(5), large(36), huge(80);
    EXPECT_EQ(S_OK, icon.draw(view.engine, 35, -7.5));
    view.expectDrawnByDirect3D({35, 0, 40, 12});
    EXPECT_TRUE(display.called("directdraw.CreateSurface texture (0,0,32,32) caps 5000")) << "video memory";
    view.restart();
    view.buffer().lost = display.surfaces["texture"]->lost = display.surfaces["saved"]->lost = true;
    EXPECT_EQ(S_OK, small.draw(view.engine, 0, 0));
    EXPECT_FALSE(display.called("direct") || display.called("buffer.Lock"));
    EXPECT_EQ(S_OK, large.draw(view.engine, 0, 0));
    EXPECT_TRUE(display.called("directdraw.CreateSurface texture (0,0,64,64)"));

    EXPECT_EQ(S_OK, view.engine->SetExtent(100, 30));
    EXPECT_TRUE(display.called("~texture") && display.called("~device"));
    const Calls hardwareAndMmx{"direct3d.CreateDevice 84e63de0 buffer",
                               "direct3d.CreateDevice 881949a1 buffer"};
    display.refuse = hardwareAndMmx;
    view.restart();
    EXPECT_EQ(S_OK, small.draw(view.engine, 0, 0));
    EXPECT_EQ(hardwareAndMmx, Calls(display.calls.begin() + 1, display.calls.begin() + 3));
    EXPECT_EQ("direct3d.CreateDevice a4665c60 buffer", display.calls[3]);
    EXPECT_TRUE(display.called("directdraw.CreateSurface texture (0,0,32,32) caps 1800")) << "system memory";
    EXPECT_FALSE(display.called("buffer.Lock"));
    EXPECT_EQ(S_OK, huge.draw(view.engine, 1, -3)); // larger than the device's textures
    EXPECT_TRUE(display.called("buffer.Lock"));
    display.refuse = {"directdraw.CreateSurface texture"};
    EXPECT_EQ(S_OK, large.draw(view.engine, 0, 0)); // there is none that large
    view.restart();
    EXPECT_EQ(S_OK, small.draw(view.engine, 0, 0));
    EXPECT_FALSE(display.called("buffer.Lock")) << "the smaller texture is still there";

    display.refuse = {"direct3d.CreateDevice"};
    EXPECT_EQ(S_OK, view.engine->SetExtent(90, 30));
    for (int i = 0; i < 3; ++i) {
        view.restart();
        EXPECT_EQ(S_OK, small.draw(view.engine, 0, 0));
        EXPECT_EQ(i == 0, display.called("direct3d.CreateDevice")) << "asked for again";
        EXPECT_TRUE(display.called("buffer.Lock"));
    }
}

} // namespace
} // namespace talx::test
