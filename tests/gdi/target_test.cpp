// Where the composition goes: the window, a caller's context, pictures of every format; palettes; the
// engine's end.
#include "tests/gdi/gdi_view.h"

namespace talx::test {
namespace {

HBITMAP bitmapOf(IUnknown* picture) {
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
    GdiTargets() : GdiView(GetParam()) {
        EXPECT_EQ(S_OK, initialize());
        EXPECT_EQ(S_OK, engine.As(&targets));
    }
    ~GdiTargets() override { ReleaseDC(window.handle(), windowContext); }

    HRESULT makePicture(long format, IPictureDisp** made) const {
        return targets->CreateDIBRenderTarget(static_cast<TalRenderTargetFormatConstants>(format), made);
    }
    ComPtr<IPictureDisp> picture(long format = 0) const {
        ComPtr<IPictureDisp> result;
        EXPECT_EQ(S_OK, makePicture(format, &result));
        return result;
    }
    void show(IPictureDisp* picture) const { EXPECT_EQ(S_OK, targets->SetRenderTargetFromDIB(picture)); }
    void refresh(RECT r = {0, 0, width, height}) const {
        EXPECT_EQ(S_OK, engine->RefreshScreen(100, -100, r.left, r.top, r.right, r.bottom));
    }
    void fill(COLORREF color) const { EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, width, height, color)); }

    ComPtr<ITalRenderTargetAccess> targets;
    HDC windowContext = GetDC(window.handle());
    TestContext caller{width + 9, height + 9};
};
INSTANTIATE_TEST_SUITE_P(Screens, GdiTargets, everyScreen, testing::PrintToStringParamName());

TEST_P(GdiTargets, GetTheClippedRectangleFromTheUnclippedPlace) {
    scribble();
    const auto source = colors();
    const RECT view{0, 0, width, height};
    for (const RECT& r : {RECT{0, 0, 61, 47}, RECT{5, 6, 15, 16}, RECT{40, 30, 999, 999},
                          RECT{-7, -3, 20, 12}, RECT{9, 9, 3, 3}, RECT{61, 0, 90, 20}, RECT{-9, -9, 0, 0}}) {
        PatBlt(caller.dc, 0, 0, 999, 999, BLACKNESS);
        SetPixelV(caller.dc, width, height, white);
        EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(caller.value()));
        refresh(r);
        RECT c{};
        IntersectRect(&c, &r, &view);
        EXPECT_EQ(GetStockObject(DEFAULT_PALETTE), GetCurrentObject(caller.dc, OBJ_PAL)) << "left in it";
        const auto shown = colorsOf(caller.dc);
        int wrong = 0;
        for (int i = 0; i < (width + 9) * (height + 9); ++i) {
            const POINT p{i % (width + 9), i / (width + 9)};
            const long x = p.x - c.left + r.left, y = p.y - c.top + r.top;
            if (!PtInRect(&c, p)) {
                wrong += shown[i] != (p.x == width && p.y == height ? white : black);
            } else if (x >= 0 && y >= 0) { // what lies outside the bitmap has no defined colour
                wrong += (shown[i] & precisionOf(format())) != source[y * width + x];
            }
        }
        EXPECT_EQ(0, wrong) << "from " << r.left << ", " << r.top;
    }
}

TEST_P(GdiTargets, IncludeAWindowEvenWhenItIsGone) {
    fill(white);
    PatBlt(windowContext, 0, 0, 100, 80, BLACKNESS);
    refresh({8, 4, 30, 20});
    const POINT inside[] = {{8, 4}, {29, 19}}, outside[] = {{7, 4}, {8, 3}, {30, 19}, {29, 20}, {41, 48}};
    for (const POINT& p : inside) {
        EXPECT_EQ(white, GetPixel(windowContext, p.x, p.y));
    }
    for (const POINT& p : outside) {
        EXPECT_EQ(black, GetPixel(windowContext, p.x, p.y));
    }
    DestroyWindow(window.handle());
    refresh();
}

TEST_P(GdiTargets, PicturesHaveTheirFormatAndShowTheComposition) {
    for (const int asked : {0, 8, 15, 16, 24, 32}) {
        SCOPED_TRACE(asked);
        const auto made = picture(asked);
        short type = 0;
        ComPtr<IPicture> face;
        EXPECT_EQ(S_OK, made.As(&face));
        EXPECT_EQ(S_OK, face->get_Type(&type));
        EXPECT_EQ(PICTYPE_BITMAP, type);
        const int expected = asked ? asked : format();
        const DIBSECTION section = BitmapBits(bitmapOf(made.Get())).section();
        const DWORD* masks = section.dsBitfields;
        EXPECT_EQ(expected, formatOf(section));
        EXPECT_EQ(width, section.dsBm.bmWidth);
        EXPECT_EQ(height, section.dsBm.bmHeight);
        if (expected == 15 || expected == 16) {
            EXPECT_EQ(
                (std::tuple{expected == 16 ? 0xF800u : 0x7C00u, expected == 16 ? 0x07E0u : 0x03E0u, 0x1Fu}),
                (std::tuple{masks[0], masks[1], masks[2]}));
        }
        scribble();
        const auto source = colors();
        show(made.Get());
        refresh({0, 0, width, 20});
        refresh({4, 20, width, height});
        show(nullptr);
        const auto shown = colorsOf(TestContext(bitmapOf(made.Get())).dc);
        const COLORREF common = asked == 8 && format() != 8 ? 0 // without a palette all its colours are black
                                                            : precisionOf(expected) & precisionOf(format());
        int wrong = 0;
        for (int i = 0; i < width * height; ++i) {
            const bool refreshed = i / width < 20 || i % width >= 4;
            wrong += refreshed ? ((source[i] ^ shown[i]) & common) != 0 : shown[i] != shown[20 * width];
        }
        EXPECT_EQ(0, wrong);
    }
    for (const long nonsense : {-1L, 1L, 4L, 7L, 17L, 0x10008L}) {
        IPictureDisp* none = reinterpret_cast<IPictureDisp*>(1);
        expectNoDibSection(makePicture(nonsense, &none));
        EXPECT_EQ(nullptr, none);
    }
    expectBare(E_POINTER, makePicture(24, nullptr));
}

TEST_P(GdiTargets, WorkInEveryOrderAndLeakNothing) {
    const ComPtr<IPictureDisp> pictures[]{picture(), picture(32)};
    const auto live = leaks.live();
    for (int step = 0; step < 1000 && !HasFailure(); ++step) {
        const int target =
            rand() % 5; // a picture, one that lives no longer than it is shown, a context, the window
        const auto shown = target < 2    ? pictures[target]
                           : target == 2 ? picture(everyFormat[step % 5])
                                         : nullptr;
        if (target < 3) {
            EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(0)); // as an owner does between two pictures
            show(shown.Get());
        } else {
            EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(target == 3 ? caller.value() : 0));
        }
        const COLORREF color = step % 2 ? white : black;
        for (const HDC dc : {caller.dc, windowContext}) {
            SetPixelV(dc, 7, 7, ~color & white);
        }
        fill(color);
        refresh();
        if (target < 3) {
            show(nullptr);
            const int bits = BitmapBits(bitmapOf(shown.Get())).bitsPerPixel();
            EXPECT_EQ(bits == 8 && format() != 8 ? black : color,
                      GetPixel(TestContext(bitmapOf(shown.Get())).dc, 7, 7))
                << target;
        }
        EXPECT_EQ(target == 3 ? color : ~color & white, GetPixel(caller.dc, 7, 7)) << target;
        EXPECT_EQ(target == 4 ? color : ~color & white, GetPixel(windowContext, 7, 7)) << target;
    }
    EXPECT_EQ(live, leaks.live());
}

TEST_P(GdiTargets, AcceptAnOwnersPicture) {
    OwnPicture own(caller.own), without(nullptr);
    SelectObject(caller.dc, caller.saved);
    show(own.pointer());
    fill(white);
    refresh();
    targets.Reset();
    engine = newEngine(); // the first one ends while the picture is its target
    EXPECT_EQ(0u, leaks.live());
    EXPECT_EQ(S_OK, initialize());
    EXPECT_EQ(S_OK, engine.As(&targets));
    SelectObject(caller.dc, caller.own);
    EXPECT_EQ(white, GetPixel(caller.dc, 60, 46));
    targets->SetRenderTargetFromDIB(without.pointer()); // nothing to draw into, nothing to lose
    refresh();
    show(nullptr);

    EXPECT_EQ(S_OK, targets->SetRenderTargetFromHDC(caller.value()));
    {
        const ImportHook<HOOK(CreateCompatibleDC)> hook(engineModule(), [](HDC) -> HDC { return nullptr; });
        expectNoCompatibleContext(targets->SetRenderTargetFromDIB(own.pointer()));
    }
    fill(black);
    SetPixelV(windowContext, 9, 9, white);
    refresh();
    EXPECT_EQ(white, GetPixel(caller.dc, 9, 9)) << "not the target any more";
    EXPECT_EQ(black, GetPixel(windowContext, 9, 9));
}

TEST(GdiScaling, MethodIsStoredAsGiven) {
    ComPtr<ITalRenderEngineScalingParams> scaling;
    EXPECT_EQ(S_OK, GdiView::newEngine().As(&scaling));
    int stored = 0;
    for (const int value : {1, 7, -1, 0, 1}) {
        auto method = talRenderEngineScalingMethodBilinearInterpolation;
        EXPECT_EQ(S_OK, scaling->get_ScalingMethod(&method));
        EXPECT_EQ(std::exchange(stored, value), static_cast<int>(method));
        EXPECT_EQ(S_OK,
                  scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(value)));
    }
}

} // namespace
} // namespace talx::test
