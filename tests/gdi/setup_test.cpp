// Setting up a GDI engine: its composition bitmap in every screen format, its extent, and its palette.
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
    constexpr DWORD formats[][4] = {{16, BI_BITFIELDS, 0xF800, 16}, {16, BI_BITFIELDS, 0x7C00, 15},
                                    {16, BI_BITFIELDS, 0x001F, 15}, {16, BI_RGB, 0xF800, 15},
                                    {32, BI_BITFIELDS, 0xF800, 32}, {24, BI_RGB, 0x7C00, 24}};
    for (const auto& [bits, compression, redMask, format] : formats) {
        GdiView other(static_cast<int>(bits));
        other.screen.compression = compression;
        other.screen.redMask = redMask;
        EXPECT_EQ(S_OK, other.initialize());
        EXPECT_EQ(format, static_cast<DWORD>(other.format()));
    }
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
    EXPECT_EQ(DWORD{BI_RGB}, requests.seen[1].header.bV4V4Compression);
    EXPECT_TRUE(GetParam() == realScreen || format() == (GetParam() == 16 ? 15 : GetParam())) << "no masks";
}

// Whatever the extent was before, another one is grey or gone, and the next one is in the screen's format.
TEST_P(GdiSetup, ExtentIsNewOrGone) {
    EXPECT_EQ(std::pair(0L, 0L), extent());
    expectNoCompatibleContext(engine->Initialize(0x7654320, 9, 9)); // not a window
    EXPECT_EQ(S_OK, initialize());
    const int screenFormat = format();
    DibRequests requests;
    constexpr long sides[] = {5, width, 130, 0, -9, 0x10000, 1 << 30, most, least};
    for (int i = 0; i < 81; ++i) {
        const long w = sides[i / 9], h = sides[i % 9];
        const bool possible = 0 < w && w < 999 && 0 < h && h < 999;
        if (!possible && w > 0 && (h < 0 || std::int64_t{w} * h < most) && h != 0) {
            continue; // there may be memory for it, or it may be had upside down
        }
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        requests.failures = possible && i % 2 ? 2 : 0;
        if (possible && i % 2 == 0) {
            EXPECT_EQ(S_OK, engine->SetExtent(w, h));
            EXPECT_EQ(std::pair(w, h), extent());
            EXPECT_EQ(std::vector<COLORREF>(w * h, grey), colors());
        } else {
            expectNoDibSection(engine->SetExtent(w, h));
            EXPECT_EQ(std::pair(0L, 0L), extent());
            EXPECT_EQ(S_OK, engine->Fill(0, 0, 0, 9, 9, white) | engine->RefreshScreen(0, 0, 0, 0, 9, 9) |
                                engine->PaletteChange());
            EXPECT_TRUE(initialized() && !bits().section().dsBm.bmBits);
            requests.failures = 2 * possible;
            expectNoDibSection(newEngine()->Initialize(window.value(), w, h));
        }
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        EXPECT_EQ(screenFormat, format());
        bits().row(3)[5] = 77;
        EXPECT_EQ(S_OK, initialize(-5, 9999));
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        EXPECT_EQ(77, bits().row(3)[5]) << "the same extent changes nothing";
    }
    requests.failures = 1;
    EXPECT_EQ(S_OK, engine->SetExtent(9, height)); // one side equal
    EXPECT_EQ(screenFormat == 16 ? 15 : screenFormat, format()) << "without masks";
    EXPECT_EQ(std::vector<COLORREF>(9 * height, grey), colors());
    // A row of more bits than 31 bits count: its length must not have wrapped around.
    const int widest = GetParam() == 8    ? 0x10000001
                       : GetParam() == 24 ? 0x5555556
                       : GetParam() == 32 ? 0x4000001
                                          : 0x8000001;
    if (SUCCEEDED(engine->SetExtent(widest, 1))) {
        EXPECT_LT(0, bits().section().dsBm.bmWidthBytes);
    }
    engine->SetExtent(9, -9); // rows upside down or a failure: either way nothing can be drawn
    EXPECT_EQ(S_OK, engine->Fill(0, -9, -9, 9, 9, white) | engine->RefreshScreen(0, 0, -9, -9, 9, 9));
}

TEST_P(GdiSetup, RefusesABitmapThatIsTooSmall) {
    for (const std::array<int, 3>& less : {std::array{1, 0, 0}, {0, 1, 0}, {0, 0, 4}}) {
        ImportHook<HOOK(GetObjectW)> hook(engineModule(), [&](HANDLE object, int size, void* out) {
            const int written = hook.original(object, size, out);
            auto& bitmap = static_cast<DIBSECTION*>(out)->dsBm;
            bitmap.bmWidth -= less[0];
            bitmap.bmHeight -= less[1];
            bitmap.bmWidthBytes -= less[2];
            return written;
        });
        expectNoDibSection(initialize(64, 2));
    }
}

// What a palettised view asks of GDI; under Wine much of it makes no difference.
TEST(GdiPalette, IsKeptUpToDateAndLetGo) {
    std::vector<std::string> calls;
    {
        GdiView view(8);
        std::vector<Import> entries = imports(engineModule());
        std::erase_if(entries, [](const Import& import) {
            const std::string& f = import.function;
            return f.find("alette") == f.npos && f.find("ealize") == f.npos && f.find("DIBColor") == f.npos;
        });
        std::map<void*, std::string> names{{GetStockObject(DEFAULT_PALETTE), " default"}};
        const ImportGate gate(
            entries,
            [&](const ImportedCall& call) {
                const bool create = call.function == "CreatePalette",
                           select = call.function == "SelectPalette";
                const auto* header = static_cast<const WORD*>(call.arguments[0]);
                calls.push_back(call.function + (create ? " " + std::to_string(header[0]) : "") +
                                (select ? names[call.arguments[1]] : ""));
                return std::nullopt;
            },
            [&](const ImportedCall& call, std::uintptr_t result) {
                if (call.function == "CreatePalette") {
                    names[reinterpret_cast<void*>(result)] = " own";
                }
            });
        EXPECT_EQ(S_OK, view.initialize());
        EXPECT_EQ(S_OK, view.engine->PaletteChange());
        EXPECT_EQ(S_OK, view.engine->RefreshScreen(0, 0, 0, 0, 9, 9));
        view.engine.Reset();
    }
    std::erase(calls, "GetNearestPaletteIndex");
    EXPECT_EQ(
        (std::vector<std::string>{"GetSystemPaletteEntries", "CreatePalette 768", "SelectPalette own",
                                  "RealizePalette", "GetPaletteEntries", // Initialize
                                  "GetSystemPaletteEntries", "SetPaletteEntries", "GetPaletteEntries",
                                  "SetDIBColorTable", "UnrealizeObject", "RealizePalette",
                                  "SelectPalette own", "RealizePalette", "SelectPalette default", // refresh
                                  "SelectPalette default"}),
        calls);
}

} // namespace
} // namespace talx::test
