// Setting up the DirectDraw engine: the objects that it makes, what it tells of failures, and the order of
// their end.
#include "tests/ddraw/ddraw_view.h"

namespace talx::test {
namespace {

TEST(DdrawSetup, InitializeGoesStepByStepAndTellsWhichOneFails) {
    const std::pair<std::string, const wchar_t*> steps[] = {
        {"DirectDrawCreate", L"Can't create DirectDraw object."},
        {"directdraw.QueryInterface 6aae1ec1", nullptr}, // without a text: the failure does not matter
        {"directdraw.SetCooperativeLevel window 8", L"Cannot set cooperation level for DirectDraw."},
        {"directdraw.CreateSurface primary (0,0,0,0) caps 200", L"Cannot create primary surface."},
        {"primary.GetPixelFormat", L"Can't get screen pixel format."},
        {"directdraw.CreateClipper 0", L"Can't create clipper object."},
        {"clipper.SetHWnd 0 window", L"Can't set DirectDraw clipper HWND."},
        {"directdraw.CreateSurface buffer (0,0,40,30) caps 2040", L"Cannot create offscreen surface."},
        {"buffer.GetSurfaceDesc", L"Cannot create offscreen surface."},
        {"primary.SetClipper clipper", L"Cannot set clipper on primary surface."},
        {"directdraw.CreatePalette 4", L"Can't set the palette."},
        {"primary.Restore", nullptr},
        {"primary.SetPalette palette", L"Can't set the palette."},
        {"buffer.Restore", nullptr},
        {"buffer.Blt (0,0,40,30) none all 1000400 ffffffff", nullptr}};
    Calls all;
    for (const auto& [call, text] : steps) {
        SCOPED_TRACE(call);
        all.push_back(call);
        const GdiLeakCheck leaks;
        DdrawView view(8, {call});
        view.display.bornLost = true;
        if (text) {
            expectDirectDrawError(FakeDisplay::failure, text, view.initialize());
            const std::string last = call.find("CreatePalette") < 99   ? "primary.Restore"
                                     : call == "buffer.GetSurfaceDesc" ? "~buffer"
                                                                       : call;
            EXPECT_EQ(last, view.display.calls.back());
            view.display.refuse.clear();
        }
        EXPECT_EQ(S_OK, view.initialize());
        EXPECT_EQ(S_OK, view.engine->Fill(0, 0, 0, 1, 1, 0)) << "initialized";
    }
    DdrawView view(8, {});
    view.display.bornLost = true;
    EXPECT_EQ(S_OK, view.initialize());
    EXPECT_EQ(S_OK, view.engine->Initialize(0, 7, 7)) << "once is enough";
    EXPECT_EQ(all, view.display.calls);
}

TEST(DdrawSetup, WhereThereIsNoDirectDraw) {
    for (const std::string& module : importedModules(engineModule())) {
        EXPECT_STRCASENE("ddraw.dll", module.c_str());
    }
    const ImportHook<HOOK(LoadLibraryExW)> library(engineModule(), [](LPCWSTR, HANDLE, DWORD) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return HMODULE{};
    });
    expectDirectDrawError(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), L"Can't create DirectDraw object.",
                          DdrawView().initialize());
}

TEST(DdrawSetup, SetExtentReplacesTheLayer) {
    DdrawView view;
    expectUninitialized(view.engine->SetExtent(5, 5));
    ASSERT_EQ(S_OK, view.initialize());
    view.display.takeCalls();
    view.display.bornLost = true;
    EXPECT_EQ(S_OK, view.engine->SetExtent(DdrawView::width, DdrawView::height)); // changes nothing
    EXPECT_EQ(S_OK, view.engine->SetExtent(50, 20));
    EXPECT_EQ(
        (Calls{"~buffer", "directdraw.CreateSurface buffer (0,0,50,20) caps 40", "buffer.GetSurfaceDesc",
               "buffer.Restore", "buffer.Blt (0,0,50,20) none all 1000400 ffffff"}),
        view.display.calls);
}

TEST(DdrawSetup, PaletteOfAnEightBitScreen) {
    ScreenFormat screen(8);
    DdrawView view(8);
    ASSERT_EQ(S_OK, view.initialize());
    EXPECT_EQ(0, std::memcmp(&screen.palette, &view.display.palette, sizeof screen.palette));
    screen.changePalette(20);
    view.display.takeCalls();
    EXPECT_EQ(S_OK, view.engine->PaletteChange());
    EXPECT_EQ(Calls{}, view.display.calls) << "DirectDraw's palette stays";
    EXPECT_EQ(S_OK, view.engine->Fill(0, 0, 0, 1, 1, RGB(228, 124, 156)));
    EXPECT_EQ(4u, view.buffer().pixel(0, 0));
}

TEST(DdrawSetup, ObjectsEndInOrder) {
    const auto endOf = [](int format) {
        DdrawView view(format, {});
        EXPECT_EQ(S_OK, view.initialize());
        EXPECT_EQ(S_OK, TestIcon().draw(view.engine, 0, 0));
        ImportHook<HOOK(DeleteObject)> gdi(engineModule(), [&](HGDIOBJ object) {
            view.display.calls.push_back("~GDI palette");
            return DeleteObject(object);
        });
        ImportHook<HOOK(FreeLibrary)> library(engineModule(), [&](HMODULE module) {
            view.display.calls.push_back("~library");
            return FreeLibrary(module);
        });
        view.display.takeCalls();
        view.engine.Reset();
        return view.display.calls;
    };
    EXPECT_EQ((Calls{"~GDI palette", "~palette", "~clipper", "~primary", "~buffer", "~direct3d",
                     "~directdraw", "~library"}),
              endOf(8));
    EXPECT_EQ((Calls{"~clipper", "~primary", "~buffer", "~saved", "~texture", "~viewport", "~device",
                     "~direct3d", "~directdraw", "~library"}),
              endOf(32));
}

// The setting is read as the DLL is loaded, so each value needs a copy of it that is loaded afresh.
TEST(DdrawSetup, SettingKeepsDirect3DOut) {
    wchar_t original[MAX_PATH], folder[MAX_PATH], copy[MAX_PATH];
    GetModuleFileNameW(engineModule(), original, MAX_PATH);
    GetTempPathW(MAX_PATH, folder);
    const auto set = [](const wchar_t* value) {
        EXPECT_TRUE(WritePrivateProfileStringW(L"TalDisplay", L"AlphaBlend", value, L"Orbiscope.INI"));
    };
    const std::pair<const wchar_t*, bool> cases[] = {
        {L"sOFTWARE", false}, {L"AutoDetect", true}, {L"Software2", true}, {nullptr, true}};
    for (const auto& [value, asks] : cases) {
        set(value);
        ASSERT_TRUE(GetTempFileNameW(folder, L"tal", 0, copy) && CopyFileW(original, copy, FALSE));
        const HMODULE module = LoadLibraryW(copy);
        set(nullptr);
        ASSERT_TRUE(module);
        {
            FakeDisplay display(module);
            const auto engine = newDirectDrawEngine(module);
            EXPECT_EQ(S_OK, engine->Initialize(reinterpret_cast<__int64>(GetDesktopWindow()), 10, 10));
            EXPECT_EQ(asks, display.called("directdraw.QueryInterface"));
            EXPECT_EQ(asks, display.called("directdraw.CreateSurface buffer (0,0,10,10) caps 2040"));
        }
        FreeLibrary(module);
        EXPECT_TRUE(DeleteFileW(copy)) << "still loaded";
    }
}

} // namespace
} // namespace talx::test
