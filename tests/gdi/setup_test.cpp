// Setting up a GDI engine: its composition bitmap in every screen format, its extent, and what stays after a
// failure.
#include "tests/gdi/gdi_view.h"

namespace talx::test {
namespace {

struct GdiSetup : testing::TestWithParam<int>, GdiView {
    GdiSetup() : GdiView(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(Screens, GdiSetup, everyScreen, testing::PrintToStringParamName());

TEST(GdiScreen, DecidesTheFormat) {
    const GdiView view;
    EXPECT_FALSE(view.initialized());
    EXPECT_EQ(S_OK, view.initialize());
    EXPECT_TRUE(view.initialized());
    const int depth = GetDeviceCaps(TestContext(1, 1).dc, BITSPIXEL);
    EXPECT_EQ(depth == 16 ? 15 : depth, view.format());
    for (const int bits : {1, 4, 48}) {
        expectNoDibSection(GdiView(bits).initialize());
    }
}

TEST_P(GdiSetup, DescribesItsBitmapAndTriesTwice) {
    DibRequests requests;
    requests.failures = 1;
    EXPECT_EQ(S_OK, initialize());
    ASSERT_EQ(2u, requests.seen.size());
    const auto& [first, table] = requests.seen[0];
    const BITMAPV4HEADER& second = requests.seen[1].header;
    using Sizes = std::tuple<long, long, int, DWORD>;
    EXPECT_EQ(Sizes(width, -height, 1, 0x73524742), // "sRGB"
              Sizes(first.bV4Width, first.bV4Height, first.bV4Planes, first.bV4CSType));
    using Colors = std::tuple<WORD, DWORD, DWORD, DWORD, DWORD, DWORD>;
    const int asked = GetParam() == realScreen ? format() : GetParam();
    EXPECT_EQ((asked == 8    ? Colors{8, BI_RGB, 0, 0, 0, 256}
               : asked == 15 ? Colors{16, BI_BITFIELDS, 0x7C00, 0x03E0, 0x001F, 0}
               : asked == 16 ? Colors{16, BI_BITFIELDS, 0xF800, 0x07E0, 0x001F, 0}
               : asked == 24 ? Colors{24, BI_RGB, 0, 0, 0, 0}
                             : Colors{32, BI_BITFIELDS, 0xFF0000, 0x00FF00, 0x0000FF, 0}),
              Colors(first.bV4BitCount, first.bV4V4Compression, first.bV4RedMask, first.bV4GreenMask,
                     first.bV4BlueMask, first.bV4ClrUsed));
    for (int i = 0; i < 256 && GetParam() == 8; ++i) {
        const PALETTEENTRY& e = screen.palette[i];
        const DWORD expected = e.peRed << 16 | e.peGreen << 8 | e.peBlue;
        EXPECT_EQ(0, std::memcmp(&expected, &table[i], 4)) << i;
    }
    EXPECT_EQ(DWORD{BI_RGB}, second.bV4V4Compression);
    EXPECT_TRUE(GetParam() == realScreen || format() == (GetParam() == 16 ? 15 : GetParam())) << "no masks";
}

TEST_P(GdiSetup, InitializesOnce) {
    EXPECT_EQ(std::pair(0L, 0L), extent());
    expectNoCompatibleContext(engine->Initialize(0x7654320, 9, 9)); // not a window
    EXPECT_EQ(S_OK, initialize());
    bits().row(3)[5] = 77;
    EXPECT_EQ(S_OK, initialize(-5, 9999));
    EXPECT_EQ(S_OK, engine->SetExtent(width, height));
    EXPECT_EQ(std::pair(long{width}, long{height}), extent());
    EXPECT_EQ(77, bits().row(3)[5]);
}

// Whichever single step fails, or all from one on: the engine is ready or says why not, and can be
// initialized next.
TEST_P(GdiSetup, SurvivesEveryFailingStep) {
    for (const auto mode : {FailurePlan::Mode::once, FailurePlan::Mode::fromThenOn}) {
        FailurePlan plan;
        const FailingImport<HOOK(GetDC)> getDc(engineModule(), plan);
        const FailingImport<HOOK(CreateCompatibleDC)> compatibleDc(engineModule(), plan);
        const FailingImport<HOOK(CreateCompatibleBitmap)> compatibleBitmap(engineModule(), plan);
        const FailingImport<HOOK(GetDIBits)> getDIBits(engineModule(), plan);
        const FailingImport<HOOK(CreatePalette)> palette(engineModule(), plan);
        const FailingImport<HOOK(GetSystemPaletteEntries)> systemPalette(engineModule(), plan);
        const FailingImport<HOOK(CreateDIBSection)> dibSection(engineModule(), plan);
        const int rounds = plan.sweep(
            [&] {
                engine = newEngine();
                const HRESULT hr = initialize();
                EXPECT_EQ(hr == S_OK, initialized());
                if (hr == static_cast<HRESULT>(0x8004400E)) {
                    expectNoCompatibleContext(hr);
                } else if (hr != S_OK) {
                    expectNoDibSection(hr);
                }
                if (plan.met() && mode == FailurePlan::Mode::once) {
                    EXPECT_EQ(S_OK, initialize());
                    EXPECT_EQ(S_OK, engine->SetExtent(8, 8));
                    EXPECT_EQ(8, bits().width());
                }
            },
            mode);
        EXPECT_GE(rounds, GetParam() == 8 ? 8 : 6);
    }
}

TEST_P(GdiSetup, AnotherExtentIsGrey) {
    EXPECT_EQ(S_OK, initialize());
    DibRequests requests;
    for (const auto& [w, h] : {std::pair{7, 5}, {130, 1}, {1, 90}}) {
        requests.failures = w == 1; // the second try
        EXPECT_EQ(S_OK, engine->SetExtent(w, h));
        EXPECT_EQ(std::pair(long{w}, long{h}), extent());
        EXPECT_EQ(std::vector<COLORREF>(w * h, grey), colors());
    }
    requests.failures = 2;
    expectNoDibSection(engine->SetExtent(9, 9));
    EXPECT_EQ(std::pair(0L, 0L), extent());
}

TEST_P(GdiSetup, ImpossibleExtentsLeaveNothingAndAreRecoveredFrom) {
    EXPECT_EQ(S_OK, initialize());
    // In bytes these are none, or more than 32 bits count in every format.
    for (const auto& [w, h] : {std::pair{0L, 0L},
                               {0, 9},
                               {9, 0},
                               {-9, 9},
                               {most, most},
                               {0x10000, 0x10000},
                               {most, 4},
                               {4, most},
                               {least, 9},
                               {least, least},
                               {most, least},
                               {1 << 30, 1 << 30}}) {
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        expectNoDibSection(newEngine()->Initialize(window.value(), w, h));
        expectNoDibSection(engine->SetExtent(w, h));
        EXPECT_EQ(std::pair(0L, 0L), extent());
        EXPECT_TRUE(initialized());
        EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, 9, 9, white));
        EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, 0, 0, 9, 9));
        EXPECT_EQ(S_OK, engine->PaletteChange());
        EXPECT_EQ(nullptr, bits().section().dsBm.bmBits);
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        EXPECT_EQ(grey, colors().back());
    }
    // A row of more bits than 31 bits count: its length must not have wrapped around.
    const int widest = GetParam() == 8    ? 0x10000001
                       : GetParam() == 24 ? 0x5555556
                       : GetParam() == 32 ? 0x4000001
                                          : 0x8000001;
    if (SUCCEEDED(engine->SetExtent(widest, 1))) {
        EXPECT_LT(0, bits().section().dsBm.bmWidthBytes);
    }
    engine->SetExtent(9, -9); // rows upside down or a failure: either way nothing can be drawn
    EXPECT_EQ(S_OK, engine->Fill(0, -9, -9, 9, 9, white));
    EXPECT_EQ(S_OK, engine->RefreshScreen(0, 0, -9, -9, 9, 9));
    EXPECT_EQ(S_OK, engine->SetExtent(width, height));
}

} // namespace
} // namespace talx::test
