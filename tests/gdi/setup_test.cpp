// Setting up a GDI engine: its composition bitmap in every screen format, its extent, and its palette.
#include "tests/gdi/gdi_view.h"

#include <map>

namespace talx::test {
namespace {

struct GdiSetup : testing::TestWithParam<int>, GdiView {
    GdiSetup() : GdiView(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(Screens, GdiSetup, everyScreen, testing::PrintToStringParamName());

TEST(GdiScreen, DecidesTheFormat) {
    const int depth = GetDeviceCaps(TestContext(1, 1).dc, BITSPIXEL);
    constexpr DWORD formats[][4] = {{16, BI_BITFIELDS, 0xF800, 16}, {16, BI_BITFIELDS, 0x7C00, 15},
                                    {16, BI_BITFIELDS, 0x001F, 15}, {16, BI_RGB, 0xF800, 15},
                                    {32, BI_BITFIELDS, 0xF800, 32}, {24, BI_RGB, 0x7C00, 24}};
    GdiView real;
    EXPECT_EQ(S_OK, real.initialize());
    EXPECT_EQ(depth == 16 ? 15 : depth, real.format());
    for (const auto& [bits, compression, redMask, format] : formats) {
        GdiView view(static_cast<int>(bits));
        view.screen.compression = compression;
        view.screen.redMask = redMask;
        EXPECT_EQ(S_OK, view.initialize());
        EXPECT_EQ(format, static_cast<DWORD>(view.format()));
    }
    for (const int bits : {1, 4, 48}) {
        expectNoDibSection(GdiView(bits).initialize());
    }
}

// Whatever the extent was before, another one is grey or gone, and the next one is in the screen's format.
TEST_P(GdiSetup, ExtentIsNewOrGone) {
    expectNoCompatibleContext(engine->Initialize(0x7654320, 9, 9)); // not a window
    EXPECT_EQ(S_OK, initialize());
    const int screenFormat = format();
    int toFail = 0; // the next calls
    const ImportHook<HOOK(CreateDIBSection)> hook(engineModule(), [&](auto... arguments) {
        return toFail-- > 0 ? nullptr : hook.original(arguments...);
    });
    for (const auto& [w, h, failures] : {std::tuple{9L, long{height}, 0},
                                         {width, 130, 0},
                                         {130, 5, 2},
                                         {0, 5, 0},
                                         {5, 0, 0},
                                         {-9, 5, 0},
                                         {65536, 65536, 0},
                                         {0x10000001, 1, 0}, // a row of more bits than 31 bits count
                                         {most, most, 0},
                                         {5, least, 0},
                                         {least, least, 0}}) {
        SCOPED_TRACE(testing::Message() << w << " x " << h);
        const bool possible = 0 < w && w < 999 && 0 < h && h < 999 && !failures;
        toFail = failures;
        const HRESULT hr = engine->SetExtent(w, h);
        possible ? expectBare(S_OK, hr) : expectNoDibSection(hr);
        EXPECT_EQ(possible, bits().section().dsBm.bmBits != nullptr);
        EXPECT_TRUE(!possible || colors(w, h) == std::vector<COLORREF>(w * h, grey));
        toFail = 0;
        EXPECT_EQ(S_OK, engine->SetExtent(width, height));
        EXPECT_EQ(screenFormat, format());
        bits().row(3)[5] = 77;
        EXPECT_EQ(S_OK, initialize(-5, 9999) | engine->SetExtent(width, height));
        EXPECT_EQ(77, bits().row(3)[5]) << "the same extent changes nothing";
    }
    toFail = 1;
    EXPECT_EQ(S_OK, engine->SetExtent(9, height));
    EXPECT_EQ(screenFormat == 16 ? 15 : screenFormat, format()) << "without masks";
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
    bool readable = true;
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
                const bool select = call.function == "SelectPalette";
                calls.push_back(select ? call.function + names[call.arguments[1]] : call.function);
                EXPECT_TRUE(call.function != "CreatePalette" ||
                            *static_cast<const WORD*>(call.arguments[0]) == 0x300);
                const bool read = call.function == "GetSystemPaletteEntries";
                return read && !readable ? std::optional<std::uintptr_t>(0) : std::nullopt;
            },
            [&](const ImportedCall& call, std::uintptr_t result) {
                names.emplace(call.function == "CreatePalette" ? reinterpret_cast<void*>(result) : nullptr,
                              " own");
            });
        EXPECT_EQ(S_OK, view.initialize());
        readable = false;
        EXPECT_EQ(S_OK, view.engine->PaletteChange());
        readable = true;
        EXPECT_EQ(S_OK, view.engine->PaletteChange());
        EXPECT_EQ(S_OK, view.engine->RefreshScreen(0, 0, 0, 0, 9, 9));
        view.engine.Reset();
    }
    std::erase(calls, "GetNearestPaletteIndex");
    EXPECT_EQ((std::vector<std::string>{"GetSystemPaletteEntries", "CreatePalette", "SelectPalette own",
                                        "RealizePalette", "GetPaletteEntries", // Initialize
                                        "GetSystemPaletteEntries", "GetSystemPaletteEntries",
                                        "SetPaletteEntries", "GetPaletteEntries", "SetDIBColorTable",
                                        "UnrealizeObject", "RealizePalette", "SelectPalette own",
                                        "RealizePalette", "SelectPalette default", // refresh
                                        "SelectPalette default"}),
              calls);
}

} // namespace
} // namespace talx::test
