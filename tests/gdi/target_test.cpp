// Where the composition goes: the window, a caller's context, pictures of every format; the engine's end.
#include "tests/gdi/gdi_view.h"

namespace talx::test {
namespace {

HBITMAP bitmapOf(IPictureDisp* picture) {
    ComPtr<IPicture> face;
    OLE_HANDLE handle = 0;
    EXPECT_EQ(S_OK, picture->QueryInterface(IID_PPV_ARGS(&face)));
    EXPECT_EQ(S_OK, face->get_Handle(&handle));
    return reinterpret_cast<HBITMAP>(static_cast<INT_PTR>(static_cast<LONG>(handle)));
}

// An owner's own picture: its pointer is an IPicture, of which only the first method is asked, and it answers
// no question for another interface. Lives on the test's stack.
struct OwnPicture final : IUnknown {
    explicit OwnPicture(HBITMAP shown) : bitmap(shown) {}
    ~OwnPicture() { EXPECT_EQ(0, references) << "a picture is not held"; }
    IPictureDisp* pointer() { return reinterpret_cast<IPictureDisp*>(this); }

    HBITMAP bitmap;
    long references = 0;
    STDMETHOD(QueryInterface)(REFIID, void** object) override { return *object = nullptr, E_NOINTERFACE; }
    STDMETHOD_(ULONG, AddRef)() override { return ++references; }
    STDMETHOD_(ULONG, Release)() override { return --references; }
    STDMETHOD(get_Handle)(OLE_HANDLE* handle) {
        EXPECT_LT(0, references) << "used without a reference";
        *handle = static_cast<OLE_HANDLE>(reinterpret_cast<UINT_PTR>(bitmap));
        return bitmap ? S_OK : E_FAIL;
    }
};

struct GdiTargets : testing::TestWithParam<int>, GdiView {
    GdiTargets() : GdiView(GetParam()) { initializeAgain(); }

    void initializeAgain() {
        EXPECT_EQ(S_OK, engine->Initialize(shown.value(), width, height));
        EXPECT_EQ(S_OK, engine.As(&targets));
    }
    HRESULT makePicture(long format, IPictureDisp** made) const {
        return targets->CreateDIBRenderTarget(static_cast<TalRenderTargetFormatConstants>(format), made);
    }
    void show(IPictureDisp* picture) const { EXPECT_EQ(S_OK, targets->SetRenderTargetFromDIB(picture)); }
    void refresh(RECT r = {0, 0, width, height}) const {
        EXPECT_EQ(S_OK, engine->RefreshScreen(100, -100, r.left, r.top, r.right, r.bottom));
    }
    void fill(COLORREF color) const { EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, width, height, color)); }

    TestWindow shown{150, 30, 100, 80};
    ComPtr<ITalRenderTargetAccess> targets;
    TestContext caller{width, height};
};
INSTANTIATE_TEST_SUITE_P(Screens, GdiTargets, everyScreen, testing::PrintToStringParamName());

TEST_P(GdiTargets, GetTheClippedRectangleFromTheUnclippedPlace) {
    scribble();
    const auto source = colors();
    const RECT view{0, 0, width, height};
    EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(caller.value()));
    for (const RECT& r : {view, RECT{20, 10, 999, 999}, RECT{-7, -3, 20, 12}, RECT{9, 9, 3, 3}}) {
        PatBlt(caller.dc, 0, 0, 999, 999, BLACKNESS);
        refresh(r);
        RECT c{};
        IntersectRect(&c, &r, &view);
        EXPECT_EQ(GetStockObject(DEFAULT_PALETTE), GetCurrentObject(caller.dc, OBJ_PAL)) << "left in it";
        const auto shown = colorsOf(caller.dc, precisionOf(format()));
        int wrong = 0;
        for (int i = 0; i < width * height; ++i) {
            const POINT p{i % width, i / width};
            const long x = p.x - c.left + r.left, y = p.y - c.top + r.top;
            // What lies outside the bitmap has no defined colour.
            wrong +=
                !PtInRect(&c, p) ? shown[i] != black : x >= 0 && y >= 0 && shown[i] != source[y * width + x];
        }
        EXPECT_EQ(0, wrong) << "from " << r.left << ", " << r.top;
    }
}

TEST_P(GdiTargets, PicturesHaveTheirFormatAndShowTheComposition) {
    for (const int asked : {0, 8, 15, 16, 24, 32}) {
        SCOPED_TRACE(asked);
        ComPtr<IPictureDisp> made;
        EXPECT_EQ(S_OK, makePicture(asked, &made));
        const int expected = asked ? asked : format();
        EXPECT_EQ(expected, formatOf(BitmapBits(bitmapOf(made.Get())).section()));
        scribble();
        const auto source = colors();
        show(made.Get());
        show(made.Get()); // the bitmap is selected already
        refresh();
        show(nullptr);
        const auto shown = colorsOf(TestContext(bitmapOf(made.Get())).dc);
        const COLORREF common = asked == 8 && format() != 8 ? 0 // without a palette all its colours are black
                                                            : precisionOf(expected) & precisionOf(format());
        EXPECT_TRUE(std::ranges::equal(source, shown,
                                       [&](COLORREF a, COLORREF b) { return ((a ^ b) & common) == 0; }));
    }
    for (const long nonsense : {-1L, 1L, 4L, 7L, 17L, 0x10008L}) {
        IPictureDisp* none = reinterpret_cast<IPictureDisp*>(1);
        expectNoDibSection(makePicture(nonsense, &none));
        EXPECT_EQ(nullptr, none);
    }
    expectBare(E_POINTER, makePicture(24, nullptr));
}

TEST_P(GdiTargets, AcceptAnOwnersPictureAndGoBackToTheWindow) {
    OwnPicture own(caller.own), without(nullptr);
    SelectObject(caller.dc, caller.saved);
    show(own.pointer());
    fill(white);
    refresh();
    targets.Reset();
    engine = newEngine(); // the first one ends while the picture is its target
    EXPECT_EQ(0u, leaks.live());
    initializeAgain();
    SelectObject(caller.dc, caller.own);
    EXPECT_EQ(white, GetPixel(caller.dc, 39, 29));
    show(without.pointer()); // nothing to draw into, nothing to lose
    refresh();
    show(nullptr);

    EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(caller.value()));
    {
        const ImportHook<HOOK(CreateCompatibleDC)> hook(engineModule(), [](HDC) -> HDC { return nullptr; });
        expectNoCompatibleContext(targets->SetRenderTargetFromDIB(own.pointer()));
    }
    fill(black);
    const HDC dc = GetDC(shown.handle());
    PatBlt(dc, 0, 0, 100, 80, WHITENESS);
    refresh({8, 4, 30, 20});
    EXPECT_EQ(white, GetPixel(caller.dc, 9, 9)) << "not the target any more";
    for (const auto& [x, y] : {std::pair{8, 4}, {29, 19}, {7, 4}, {8, 3}, {30, 19}, {29, 20}}) {
        EXPECT_EQ(x >= 8 && x < 30 && y >= 4 && y < 20 ? black : white, GetPixel(dc, x, y));
    }
    ReleaseDC(shown.handle(), dc);
    DestroyWindow(shown.handle());
    refresh();
}

} // namespace
} // namespace talx::test
