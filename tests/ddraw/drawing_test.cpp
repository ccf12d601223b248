// Drawing by the DirectDraw engine into lost, missing and odd surfaces, and what it asks of them.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

// Surfaces find out themselves what is written beside their pixels.
TEST(DdrawDrawing, NothingIsDrawnWhereItCannotBe) {
    for (const int bits : {12, 8}) { // no format that the engine knows, or the screen has another meanwhile
        TestIcon icon;
        DdrawView view(bits == 12 ? 12 : 32);
        ASSERT_EQ(S_OK, view.initialize());
        view.display->bits = bits;
        EXPECT_EQ(S_OK, view.engine->SetExtent(30, 20) | view.engine->Fill(0, 0, 0, 99, 99, white) |
                            icon.draw(view.engine) | icon.drawAsImage(view.engine));
        EXPECT_EQ(bits == 12 ? 30 * 20 : 0, std::ranges::count(view.buffer().memory, 0));
    }
}

TEST(DdrawDrawing, SurfacesThatAreLostOrMissing) {
    DdrawView view;
    const auto& engine = view.engine;
    TestIcon icon;
    __int64 dc = 0;
    const struct {
        std::function<HRESULT()> call;
        HRESULT withoutBuffer;
        const wchar_t* text;
    } methods[] = {{[&] { return engine->Fill(0, 0, 0, 5, 5, 0); }, E_FAIL, bltFailedText},
                   {[&] { return engine->GetDrawContext(0, &dc); }, E_FAIL, L"Surface GetDC failed."},
                   {[&] { return engine->ReleaseDrawContext(0, dc); }, S_OK, L""},
                   {[&] { return icon.drawAsImage(engine); }, S_OK, L""},
                   {[&] { return icon.draw(engine); }, S_OK, L""},
                   {[&] { return engine->RefreshScreen(0, 0, 0, 0, 9, 9); }, E_INVALIDARG, bltFailedText}};
    const auto expectResult = [](HRESULT hr, const wchar_t* text, HRESULT actual) {
        FAILED(hr) ? expectDirectDrawError(hr, text, actual) : expectBare(hr, actual);
    };
    takeErrorInfo();
    ASSERT_EQ(S_OK, view.initialize());
    for (const auto& [call, result, text] : methods) {
        const bool refresh = result == E_INVALIDARG;
        view.buffer().lost = true;
        view.display->takeCalls();
        expectResult(refresh ? FakeDisplay::surfaceLost : S_OK, text, call());
        EXPECT_EQ(refresh ? "primary.Blt" : "buffer.Restore",
                  view.display->calls[0].substr(0, 14 - 3 * refresh));
        view.buffer().lost = false;
    }
    view.display->refuse = {"directdraw.CreateSurface"};
    EXPECT_EQ(S_OK, engine->SetExtent(10, 10));
    for (const auto& [call, result, text] : methods) {
        expectResult(result, text, call());
    }
}

TEST(DdrawDrawing, CallsThatReachTheSurfaces) {
    DdrawView view(16);
    const auto& engine = view.engine;
    TestIcon icon;
    __int64 dc = 1;
    ASSERT_EQ(S_OK, view.initialize());
    expectDirectDrawError(E_POINTER, L"GetDrawContext", engine->GetDrawContext(0, nullptr));
    view.display->takeCalls();
    EXPECT_EQ(S_OK, engine->Fill(9, -7, 20, 8, 99, RGB(0xFF, 0x04, 0x08)));
    EXPECT_EQ(S_OK, engine->Fill(0, 40, 0, 50, 9, 0x80FFFFFF));
    EXPECT_EQ(S_OK, engine->RefreshScreen(most, least, 5, -6, 100, 10));
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 5, 5, 5, 9));
    EXPECT_EQ(S_OK, engine->GetDrawContext(3, &dc));
    EXPECT_EQ(S_OK, engine->ReleaseDrawContext(3, dc));
    EXPECT_EQ(S_OK, icon.draw(engine));
    view.display->context = 0;
    expectDirectDrawError(E_FAIL, L"Surface GetDC failed.", engine->GetDrawContext(0, &dc));
    view.display->lie = {0, 0, 79}; // rows that lie over each other
    expectDirectDrawError(E_FAIL, L"DrawIcon8", icon.draw(engine));
    const Calls expected{
        "buffer.Blt (0,20,8,30) none all 1000400 f821",
        "primary.Blt (2147483612,-2147483648,2147483647,-2147483638) buffer (5,0,40,10) 1000000 0",
        "buffer.GetDC",
        "buffer.ReleaseDC 0x5a5a",
        "buffer.Lock all (0,0,0,0) caps 0 1",
        "buffer.Unlock",
        "buffer.GetDC",
        "buffer.ReleaseDC 0",
        "buffer.Lock all (0,0,0,0) caps 0 1",
        "buffer.Unlock"};
    EXPECT_EQ(expected, view.display->calls);
}

} // namespace
} // namespace talx::test
