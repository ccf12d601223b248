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
            ASSERT_EQ(bits.pixel(x, y), view.buffer().pixel(x, y)) << x << ", " << y;
        }
    }
}

// Surfaces find out themselves what is written beside their pixels.
TEST(DdrawDrawing, NothingIsDrawnWhereItCannotBe) {
    DdrawView odd(12); // no format that the engine knows: only fills, with 0
    ASSERT_EQ(S_OK, odd.initialize());
    paintScene(odd.engine);
    const auto& memory = odd.buffer().memory;
    EXPECT_EQ(DdrawView::width * DdrawView::height, std::count(memory.begin(), memory.end(), 0));

    DdrawView changed; // the screen was given another depth meanwhile
    ASSERT_EQ(S_OK, changed.initialize());
    changed.display.bits = 8;
    ASSERT_EQ(S_OK, changed.engine->SetExtent(30, 20));
    paintScene(changed.engine);
}

TEST(DdrawDrawing, SurfacesThatAreLostFailOrAreMissing) {
    DdrawView view;
    const auto& engine = view.engine;
    TestIcon icon;
    __int64 dc = 0;
    const struct {
        std::function<HRESULT()> call;
        std::string step;
        const wchar_t *text, *textWithoutBuffer; // null: without error information; success
        HRESULT withoutBuffer;
    } methods[] = {
        {[&] { return engine->Fill(0, 0, 0, 5, 5, 0); }, "buffer.Blt", L"Color fill Blt failed.",
         bltFailedText, E_FAIL},
        {[&] { return engine->GetDrawContext(0, &dc); }, "buffer.GetDC", L"Surface GetDC failed.",
         L"Surface GetDC failed.", E_FAIL},
        {[&] { return engine->ReleaseDrawContext(0, dc); }, "buffer.ReleaseDC", nullptr, nullptr, S_OK},
        {[&] { return engine->DrawImage(0, icon.image.image(), 0, 0, 1, 0, 0, 9, 9, 0); }, "buffer.Lock",
         L"DrawImage", nullptr, S_OK},
        {[&] { return icon.draw(engine, 0, 0); }, "buffer.Lock", L"DrawIcon8", nullptr, S_OK},
        {[&] { return engine->RefreshScreen(0, 0, 0, 0, 9, 9); }, "primary.Blt", bltFailedText, bltFailedText,
         E_INVALIDARG}};
    const auto expectResult = [](HRESULT hr, const wchar_t* text, HRESULT actual) {
        text ? expectDirectDrawError(hr, text, actual) : expectBare(hr, actual);
    };
    for (const auto& method : methods) {
        expectUninitialized(method.call());
    }
    ASSERT_EQ(S_OK, view.initialize());
    for (const auto& method : methods) {
        SCOPED_TRACE(method.step);
        const bool refresh = method.step == "primary.Blt";
        view.buffer().lost = true;
        view.display.refuse.clear();
        view.display.takeCalls();
        expectResult(refresh ? FakeDisplay::surfaceLost : S_OK, refresh ? method.text : nullptr,
                     method.call());
        EXPECT_EQ(refresh ? "primary.Blt" : "buffer.Restore",
                  view.display.calls[0].substr(0, 14 - 3 * refresh));
        view.buffer().lost = false;
        view.display.refuse = {method.step};
        expectResult(method.text ? FakeDisplay::failure : E_FAIL, method.text, method.call());
    }
    view.display.refuse = {"directdraw.CreateSurface"};
    EXPECT_EQ(S_OK, engine->SetExtent(10, 10));
    for (const auto& method : methods) {
        SCOPED_TRACE(method.step);
        expectResult(method.withoutBuffer, method.textWithoutBuffer, method.call());
    }
}

TEST(DdrawDrawing, CallsThatReachTheSurfaces) {
    DdrawView view(16);
    const auto& engine = view.engine;
    TestIcon icon;
    __int64 dc = 1;
    ASSERT_EQ(S_OK, view.initialize());
    expectDirectDrawError(E_POINTER, L"GetDrawContext", engine->GetDrawContext(0, nullptr));
    expectDirectDrawError(E_INVALIDARG, L"Unable to translate color.",
                          engine->Fill(0, 0, 0, 9, 9, 0x80FFFFFF));
    view.display.takeCalls();
    EXPECT_EQ(S_OK, engine->Fill(9, -7, 20, 8, 99, RGB(0xFF, 0x04, 0x08)));
    EXPECT_EQ(S_OK, engine->Fill(0, 40, 0, 50, 9, 0x80FFFFFF));
    EXPECT_EQ(S_OK, engine->RefreshScreen(most, least, 5, -6, 100, 10));
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 5, 5, 5, 9));
    EXPECT_EQ(S_OK, engine->GetDrawContext(3, &dc));
    EXPECT_EQ(S_OK, engine->ReleaseDrawContext(3, dc));
    view.display.refuse = {"buffer.Lock", "buffer.GetDC"};
    EXPECT_EQ(FakeDisplay::failure, icon.draw(engine, 0, 0));
    EXPECT_EQ(FakeDisplay::failure, engine->GetDrawContext(0, &dc));
    view.display.refuse.clear();
    view.display.context = 0;
    expectDirectDrawError(E_FAIL, L"Surface GetDC failed.", engine->GetDrawContext(0, &dc));
    const Calls expected{
        "buffer.Blt (0,20,8,30) none all 1000400 f821",
        "primary.Blt (2147483612,-2147483648,2147483647,-2147483638) buffer (5,0,40,10) 1000000 0",
        "buffer.GetDC",
        "buffer.ReleaseDC 0x5a5a",
        "buffer.Lock all (0,0,0,0) caps 0 1",
        "buffer.Unlock",
        "buffer.GetDC",
        "buffer.ReleaseDC 0x5a5a",
        "buffer.GetDC",
        "buffer.ReleaseDC 0"};
    EXPECT_EQ(expected, view.display.calls);
}

} // namespace
} // namespace talx::test
