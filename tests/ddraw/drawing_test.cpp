// Drawing by the DirectDraw engine into surfaces of every format, lost ones and ones that fail; and showing
// them.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

// The other engine's bitmap is compared with a model elsewhere.
TEST(DdrawDrawing, BothEnginesPaintTheSamePixels) {
    for (const int format : everyFormat) {
        SCOPED_TRACE(format);
        GdiView gdi(format);
        gdi.initialize();
        paintScene(gdi.engine);
        DdrawView view(format);
        ASSERT_EQ(S_OK, view.initialize());
        paintScene(view.engine);
        const BitmapBits bits = gdi.bits();
        for (int i = 0; i < DdrawView::width * DdrawView::height; ++i) {
            const int x = i % DdrawView::width, y = i / DdrawView::width;
            ASSERT_EQ(bits.pixel(x, y), view.layer().pixel(x, y)) << x << ", " << y;
        }
    }
}

// Surfaces find out themselves what is written beside their pixels.
TEST(DdrawDrawing, NothingIsDrawnWhereItCannotBe) {
    DdrawView odd(12); // no format that the engine knows: only fills, with 0
    ASSERT_EQ(S_OK, odd.initialize());
    paintScene(odd.engine);
    const auto& memory = odd.layer().memory;
    EXPECT_EQ(DdrawView::width * DdrawView::height, std::count(memory.begin(), memory.end(), 0));

    DdrawView changed; // a surface with fewer rows than it was asked for; then another depth of the screen
    changed.display.missingRows = 3;
    ASSERT_EQ(S_OK, changed.initialize());
    paintScene(changed.engine);
    changed.display.bits = 8;
    ASSERT_EQ(S_OK, changed.engine->SetExtent(30, 20));
    paintScene(changed.engine);
}

TEST(DdrawDrawing, LostSurfacesAreRestoredButNotForRefreshing) {
    DdrawView view;
    const auto& engine = view.engine;
    ASSERT_EQ(S_OK, view.initialize());
    TestIcon icon;
    __int64 dc = 0;
    const std::function<HRESULT()> restoring[] = {
        [&] { return engine->Fill(0, 0, 0, 5, 5, 0); }, [&] { return engine->GetDrawContext(0, &dc); },
        [&] { return engine->ReleaseDrawContext(0, dc); },
        [&] { return engine->DrawImage(0, icon.image.image(), 0, 0, 1, 0, 0, 9, 9, 0); },
        [&] {
            return icon.draw(engine, 0, 0);
        }};
    for (const auto& call : restoring) {
        view.layer().lost = true;
        view.display.takeCalls();
        EXPECT_EQ(S_OK, call());
        EXPECT_EQ("layer.Restore", view.display.calls.front()) << "call " << &call - restoring;
    }
    view.layer().lost = true;
    expectDirectDrawError(FakeDisplay::surfaceLost, bltFailedText, engine->RefreshScreen(0, 0, 0, 0, 9, 9));
    EXPECT_TRUE(view.layer().lost);
}

TEST(DdrawDrawing, FillAndRefreshClipAndTellOfFailures) {
    DdrawView view(16);
    const auto& engine = view.engine;
    expectUninitialized(engine->Fill(0, 0, 0, 1, 1, 0));
    expectUninitialized(engine->RefreshScreen(0, 0, 0, 0, 1, 1));
    ASSERT_EQ(S_OK, view.initialize());
    view.display.takeCalls();
    EXPECT_EQ(S_OK, engine->Fill(9, -7, 20, 8, 99, RGB(0xFF, 0x04, 0x08)));
    EXPECT_EQ(S_OK, engine->Fill(0, 40, 0, 50, 9, 0x80FFFFFF));
    EXPECT_EQ(S_OK, engine->RefreshScreen(100, 50, 0, 0, 10, 10));
    EXPECT_EQ(S_OK, engine->RefreshScreen(most, least, 5, -6, 100, 10));
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 5, 5, 5, 9));
    EXPECT_EQ(
        (Calls{"layer.Blt (0,20,8,30) none all 1000400 f821",
               "primary.Blt (100,50,110,60) layer (0,0,10,10) 1000000 0",
               "primary.Blt (2147483647,-2147483648,2147483647,-2147483638) layer (5,0,40,10) 1000000 0"}),
        view.display.calls);
    expectDirectDrawError(E_INVALIDARG, L"Unable to translate color.",
                          engine->Fill(0, 0, 0, 9, 9, 0x80FFFFFF));
    view.display.refuse = {"layer.Blt", "primary.Blt"};
    expectDirectDrawError(FakeDisplay::failure, L"Color fill Blt failed.", engine->Fill(0, 0, 0, 9, 9, 0));
    expectDirectDrawError(FakeDisplay::failure, bltFailedText, engine->RefreshScreen(0, 0, 0, 0, 9, 9));
}

TEST(DdrawDrawing, ContextsAndLocksThatFail) {
    DdrawView view;
    const auto& engine = view.engine;
    __int64 dc = 1;
    expectUninitialized(engine->GetDrawContext(0, nullptr));
    expectUninitialized(engine->ReleaseDrawContext(0, 0));
    ASSERT_EQ(S_OK, view.initialize());
    expectDirectDrawError(E_POINTER, L"GetDrawContext", engine->GetDrawContext(0, nullptr));
    view.display.takeCalls();
    EXPECT_EQ(S_OK, engine->GetDrawContext(3, &dc));
    EXPECT_EQ(S_OK, engine->ReleaseDrawContext(3, dc));
    EXPECT_EQ((Calls{"layer.GetDC", "layer.ReleaseDC 0x5a5a"}), view.display.takeCalls());

    view.display.refuse = {"layer.GetDC", "layer.ReleaseDC", "layer.Lock"};
    expectBare(E_FAIL, engine->ReleaseDrawContext(0, dc));
    view.display.takeCalls();
    expectDirectDrawError(FakeDisplay::failure, L"Surface GetDC failed.", engine->GetDrawContext(0, &dc));
    EXPECT_EQ((Calls{"layer.GetDC", "layer.ReleaseDC 0x5a5a"}), view.display.takeCalls()) << "it yielded one";
    TestIcon icon;
    expectDirectDrawError(FakeDisplay::failure, L"DrawImage",
                          engine->DrawImage(0, icon.image.image(), 0, 0, 1, 0, 0, 9, 9, 0));
    EXPECT_EQ((Calls{"layer.Lock all (0,0,0,0) caps 0 1", "layer.Unlock null"}), view.display.takeCalls());
    expectDirectDrawError(FakeDisplay::failure, L"DrawIcon8", icon.draw(engine, 0, 0));
    view.display.refuse.clear();
    view.display.context = 0;
    expectDirectDrawError(E_FAIL, L"Surface GetDC failed.", engine->GetDrawContext(0, &dc));
    EXPECT_EQ("layer.ReleaseDC 0", view.display.calls.back());
}

} // namespace
} // namespace talx::test
