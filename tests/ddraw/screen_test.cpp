// The DirectDraw engine on the real screen.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

void handleMessages() {
    for (const DWORD start = GetTickCount(); GetTickCount() - start < 200;) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageW(&message);
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
    }
}

TEST(DdrawScreen, ShowsItInPlace) {
    const HDC screen = GetDC(nullptr); // for the life of the program
    const TestWindow window(200, 150, 61, 47);
    handleMessages(); // the window paints itself
    const EngineView view(true, realScreen);
    ASSERT_EQ(S_OK, view.engine->Initialize(window.value(), 40, 30));
    EXPECT_EQ(S_OK, view.engine->Fill(0, 30, 20, 38, 28, RGB(255, 0, 0)));
    __int64 dc = 0;
    ASSERT_EQ(S_OK, view.engine->GetDrawContext(0, &dc));
    SetPixel(reinterpret_cast<HDC>(dc), 39, 29, white);
    EXPECT_EQ(S_OK, view.engine->ReleaseDrawContext(0, dc));

    for (int i = 0; i < 20 && GetPixel(screen, 210 + 31, 155 + 21) != RGB(255, 0, 0); ++i) {
        // The window's own background may still be on its way and win.
        EXPECT_EQ(S_OK, view.engine->RefreshScreen(210, 155, 31, 21, 40, 30)); // into the window
        EXPECT_EQ(S_OK, view.engine->RefreshScreen(100, 50, 31, 21, 40, 30));  // where the window is not
        handleMessages();
    }
    EXPECT_EQ(RGB(255, 0, 0), GetPixel(screen, 210 + 37, 155 + 27));
    EXPECT_EQ(white, GetPixel(screen, 210 + 39, 155 + 29));
    EXPECT_NE(RGB(255, 0, 0), GetPixel(screen, 210 + 30, 155 + 21));
    EXPECT_NE(RGB(255, 0, 0), GetPixel(screen, 100 + 32, 50 + 22));
}

// Surfaces that the platform makes smaller than they say, and ones too large for any memory.
TEST(DdrawScreen, RefusesSurfacesThatAreNotThere) {
    const EngineView view(true, realScreen);
    const auto& engine = view.engine;
    view.initialize(engine.Get());
    for (const auto& [w, h] : {std::pair{536870913L, 53L}, {65536, 65536}}) {
        EXPECT_EQ(S_OK, engine->SetExtent(w, h));
        expectDirectDrawError(E_FAIL, bltFailedText, engine->Fill(0, 0, 0, w, h, 0));
        EXPECT_EQ(S_OK, TestIcon().draw(engine, w - 20, h - 20));
        EXPECT_TRUE(FAILED(view.newEngine()->Initialize(reinterpret_cast<__int64>(view.window()), w, h)));
    }
}

} // namespace
} // namespace talx::test
