// Setting up the DirectDraw engine: the objects that it makes, what it does without some of them, and the
// order of their end.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

TEST(DdrawSetup, InitializeGoesStepByStep) {
    const Calls steps{"DirectDrawCreate",
                      "directdraw.QueryInterface 6aae1ec1",
                      "directdraw.SetCooperativeLevel window 8",
                      "directdraw.CreateSurface primary (0,0,0,0) caps 200",
                      "primary.GetPixelFormat",
                      "directdraw.CreateClipper 0",
                      "clipper.SetHWnd 0 window",
                      "directdraw.CreateSurface buffer (0,0,40,30) caps 2040",
                      "buffer.GetSurfaceDesc",
                      "primary.SetClipper clipper",
                      "directdraw.CreatePalette 4",
                      "primary.Restore",
                      "primary.SetPalette palette",
                      "buffer.Restore",
                      "buffer.Blt (0,0,40,30) none all 1000400 ffffffff"};
    DdrawView view(8, {"directdraw.CreatePalette"});
    view.display->bornLost = true;
    expectDirectDrawError(FakeDisplay::failure, L"Can't set the palette.", view.initialize());
    EXPECT_EQ("primary.Restore", view.display->takeCalls().back());
    view.display->refuse.clear();
    EXPECT_EQ(S_OK, view.initialize());
    EXPECT_FALSE(view.display->called("Direct") || view.display->called("directdraw.Query"))
        << "once is enough";
    view.display->takeCalls();
    EXPECT_EQ(S_OK, view.engine->PaletteChange());
    EXPECT_EQ(Calls{}, view.display->calls) << "DirectDraw's palette stays";
    EXPECT_EQ(0, std::memcmp(&view.screen.palette, &view.display->palette, sizeof view.display->palette));

    DdrawView other(8, {});
    EXPECT_EQ(Calls{steps[0]}, other.display->calls) << "at once";
    other.display->bornLost = true;
    other.display->fails = [&](const std::string& call) {
        EXPECT_TRUE(!call.starts_with("directdraw.Set") || other.initialize() == E_UNEXPECTED);
        return false;
    };
    EXPECT_EQ(S_OK, other.initialize());
    EXPECT_EQ(S_OK, other.engine->Initialize(0, 7, 7)) << "once is enough";
    EXPECT_EQ(steps, other.display->calls);
}

TEST(DdrawSetup, TheSystemsDirectDrawOrNone) {
    const ImportHook<HOOK(LoadLibraryExW)> library(
        engineModule(), [](LPCWSTR name, HANDLE file, DWORD flags) {
            EXPECT_STREQ(L"ddraw.dll", name);
            EXPECT_TRUE(!file && flags == LOAD_LIBRARY_SEARCH_SYSTEM32);
            SetLastError(ERROR_MOD_NOT_FOUND);
            return HMODULE{};
        });
    expectDirectDrawError(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), L"Can't create DirectDraw object.",
                          DdrawView().initialize());
}

TEST(DdrawSetup, RefusesSurfacesThatAreMissingOrTooSmall) {
    constexpr HRESULT noMemory = E_OUTOFMEMORY; // DirectDraw's own name for it has the same value
    constexpr const wchar_t *noPrimary = L"Cannot create primary surface.",
                            *noBuffer = L"Cannot create offscreen surface.";
    for (const auto& [bits, missing, lie, result, text] :
         {std::tuple<int, const char*, std::array<int, 3>, HRESULT, const wchar_t*>{
              32, "primary", {}, E_POINTER, noPrimary},
          {32, "buffer", {}, E_POINTER, noBuffer},
          {32, "", {1, 0, 0}, noMemory, noBuffer},
          {32, "", {0, 1, 0}, noMemory, noBuffer},
          {32, "", {0, 0, 159}, noMemory, noBuffer},
          {32, "", {0, 0, -159}, noMemory, noBuffer},
          {32, "", {0, 0, most}, noMemory, noBuffer}, // more than 31 bits count
          {15, "", {0, 0, 79}, noMemory, noBuffer},
          {15, "", {0, 0, 80}, S_OK, L""},
          {32, "", {0, 0, -160}, S_OK, L""}}) {
        SCOPED_TRACE(testing::Message() << bits << " " << missing << testing::PrintToString(lie));
        DdrawView view;
        view.display->bits = bits;
        view.display->yieldNothing = missing;
        view.display->lie = lie;
        const HRESULT hr = view.initialize();
        result == S_OK ? expectBare(S_OK, hr) : expectDirectDrawError(result, text, hr);
    }
}

TEST(DdrawSetup, FormatIsThatOfBitsAndRedMask) {
    for (const auto& [bits, redMask, red] : {std::tuple<int, DWORD, DWORD>{16, 0xF800, 0xF800},
                                             {16, 0x7C00, 0x7C00},
                                             {16, 0x1F, 0x7C00},
                                             {32, 0xF800, 0xFF0000}}) {
        DdrawView view(bits);
        view.display->redMask = redMask;
        EXPECT_EQ(S_OK, view.initialize() | view.engine->Fill(0, 0, 0, 1, 1, RGB(0xFF, 0, 0)));
        EXPECT_EQ(red, view.buffer().pixel(0, 0));
    }
}

TEST(DdrawSetup, SetExtentReplacesTheBuffer) {
    DdrawView view;
    ASSERT_EQ(S_OK, view.initialize());
    view.display->takeCalls();
    view.display->bornLost = true;
    EXPECT_EQ(S_OK, view.engine->SetExtent(DdrawView::width, DdrawView::height)); // changes nothing
    EXPECT_EQ(S_OK, view.engine->SetExtent(DdrawView::width, 20));
    EXPECT_EQ(
        (Calls{"~buffer", "directdraw.CreateSurface buffer (0,0,40,20) caps 40", "buffer.GetSurfaceDesc",
               "buffer.Restore", "buffer.Blt (0,0,40,20) none all 1000400 ffffff"}),
        view.display->takeCalls());
    view.display->refuse = {"directdraw.CreateSurface"};
    EXPECT_EQ(S_OK, view.engine->SetExtent(50, 20) | view.engine->SetExtent(-5, 1 << 20));
    EXPECT_EQ((Calls{"~buffer", "directdraw.CreateSurface buffer (0,0,50,20) caps 40",
                     "directdraw.CreateSurface buffer (0,0,-5,1048576) caps 40"}),
              view.display->calls);
    long width = 0, height = 0;
    EXPECT_EQ(S_OK, view.engine->GetExtent(&width, &height));
    EXPECT_EQ(std::pair(-5L, 1L << 20), std::pair(width, height)) << "stored, surface or not";
}

TEST(DdrawSetup, ObjectsEndInOrder) {
    const auto endOf = [](int format) {
        DdrawView view(format, {});
        EXPECT_EQ(S_OK, view.initialize());
        EXPECT_EQ(S_OK, TestIcon().draw(view.engine));
        ImportHook<HOOK(DeleteObject)> gdi(engineModule(), [&](HGDIOBJ object) {
            view.display->calls.push_back("~GDI palette");
            return gdi.original(object);
        });
        ImportHook<HOOK(FreeLibrary)> library(engineModule(), [&](HMODULE module) {
            view.display->calls.push_back("~library");
            return FreeLibrary(module);
        });
        view.display->takeCalls();
        view.engine.Reset();
        return view.display->calls;
    };
    EXPECT_EQ((Calls{"~GDI palette", "~palette", "~clipper", "~primary", "~buffer", "~direct3d",
                     "~directdraw", "~library"}),
              endOf(8));
    EXPECT_EQ((Calls{"~clipper", "~primary", "~buffer", "~texture", "~viewport", "~device", "~direct3d",
                     "~directdraw", "~library"}),
              endOf(32));
}

// The setting is read as the DLL is loaded, so each value needs a copy of it that is loaded afresh.
TEST(DdrawSetup, SettingKeepsDirect3DOut) {
    const wchar_t* const copy = L"C:\\talxrend-setting.dll";
    const auto set = [](const wchar_t* value) {
        EXPECT_TRUE(WritePrivateProfileStringW(L"TalDisplay", L"AlphaBlend", value, L"Orbiscope.INI"));
    };
    ASSERT_TRUE(CopyFileW(pathOf(engineModule()).c_str(), copy, FALSE));
    for (const auto& [value, asks] : {std::pair<const wchar_t*, bool>{L"sOFTWARE", false},
                                      {L"AutoDetect", true},
                                      {L"Software2", true},
                                      {nullptr, true}}) {
        set(value);
        const HMODULE module = LoadLibraryW(copy);
        set(nullptr);
        ASSERT_TRUE(module);
        {
            FakeDisplay display(module);
            const auto engine = createObject<ITalRenderEngine2>(module, __uuidof(TalRenderEngine));
            EXPECT_EQ(S_OK, engine->Initialize(reinterpret_cast<__int64>(EngineView::window()), 10, 10));
            EXPECT_EQ(asks, display.called("directdraw.QueryInterface"));
            EXPECT_EQ(asks, display.called("directdraw.CreateSurface buffer (0,0,10,10) caps 2040"));
        }
        FreeLibrary(module);
    }
    EXPECT_TRUE(DeleteFileW(copy)) << "still loaded";
}

} // namespace
} // namespace talx::test
