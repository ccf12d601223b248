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

TEST(DdrawScreen, PaintsAsTheOtherEngineAndShowsItInPlace) {
    const HDC screen = GetDC(nullptr); // for the life of the program
    const int depth = GetDeviceCaps(screen, BITSPIXEL);
    GdiView gdi(depth == 16 ? 16 : realScreen); // a 16-bit screen is 5-5-5 to GDI, 5-6-5 to DirectDraw
    gdi.initialize();
    paintScene(gdi.engine);
    const TestWindow window(200, 150, 61, 47);
    handleMessages(); // the window paints itself
    const auto engine = newDirectDrawEngine();
    ASSERT_EQ(S_OK, engine->Initialize(window.value(), 40, 30));
    paintScene(engine);

    __int64 dc = 0;
    ASSERT_EQ(S_OK, engine->GetDrawContext(0, &dc));
    const BitmapBits buffer(GetCurrentObject(reinterpret_cast<HDC>(dc), OBJ_BITMAP)), expected = gdi.bits();
    ASSERT_EQ(depth, buffer.bitsPerPixel());
    int rounded = 0;
    for (int i = 0; i < 3 * 40 * 30; ++i) {
        const int x = i / 3 % 40, y = i / 120, shift = i % 3 * 8;
        const int e = expected.pixel(x, y) >> shift & 255, a = buffer.pixel(x, y) >> shift & 255;
        const int allowed = depth == 32 && x >= 12 && x < 32 && y < 16 ? 2 : 0; // the icon
        rounded += std::abs(e - a);
        ASSERT_LE(std::abs(e - a), allowed) << x << ", " << y << ": " << a << ", not " << e;
    }
    EXPECT_EQ(depth == 32, rounded > 0) << "Direct3D rounds where the software blend cuts off";
    SetPixel(reinterpret_cast<HDC>(dc), 39, 29, RGB(255, 255, 255));
    EXPECT_EQ(S_OK, engine->ReleaseDrawContext(0, dc));

    for (int i = 0; i < 20 && GetPixel(screen, 210 + 31, 155 + 21) != RGB(255, 0, 0); ++i) {
        // The window's own background may still be on its way and win.
        EXPECT_EQ(S_OK, engine->RefreshScreen(210, 155, 31, 21, 40, 30)); // into the middle of the window
        EXPECT_EQ(S_OK, engine->RefreshScreen(100, 50, 31, 21, 40, 30));  // where the window is not
        handleMessages();
    }
    EXPECT_EQ(RGB(255, 0, 0), GetPixel(screen, 210 + 37, 155 + 27));
    EXPECT_EQ(RGB(255, 255, 255), GetPixel(screen, 210 + 39, 155 + 29));
    EXPECT_NE(RGB(255, 0, 0), GetPixel(screen, 210 + 30, 155 + 21));
    EXPECT_NE(RGB(255, 0, 0), GetPixel(screen, 100 + 32, 50 + 22));
}

// Surfaces that the platform makes smaller than they say, and ones too large for any memory.
TEST(DdrawScreen, RefusesSurfacesThatAreNotThere) {
    const TestWindow window(200, 150, 61, 47);
    const auto engine = newDirectDrawEngine();
    ASSERT_EQ(S_OK, engine->Initialize(window.value(), 40, 30));
    for (const auto& [w, h] : {std::pair{536870913L, 53L}, {65536, 65536}}) {
        EXPECT_EQ(S_OK, engine->SetExtent(w, h));
        expectDirectDrawError(E_FAIL, bltFailedText, engine->Fill(0, 0, 0, w, h, 0));
        EXPECT_EQ(S_OK, TestIcon().draw(engine, w - 20, h - 20));
        EXPECT_TRUE(FAILED(newDirectDrawEngine()->Initialize(window.value(), w, h)));
    }
}

} // namespace
} // namespace talx::test
