// What the window makes of files, of another engine or display, of sizes without room, and of paper.
#include "tests/support/gdi_leaks.h"
#include "tests/viewer/window/shown.h"

#include "viewer/share/clipboard.h"
#include "viewer/share/print.h"

#include <shlobj.h>

namespace talview::test {
namespace {

// The last text of the status line.
std::wstring told;
WINBOOL WINAPI tell(HDC, LPCWSTR text, int, LPRECT, UINT) {
    told = text;
    return TRUE;
}

// Files of one size are not read on while the gate is closed. A reader that was left alone may come through
// it until the program ends.
struct SlowFile {
    static constexpr int width = 64, height = 32;
    HANDLE open = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    std::atomic<int> waiting = 0;
    ImportHook<HOOK(ReadFile)> hook{
        program(), [this](HANDLE file, LPVOID to, DWORD size, LPDWORD done, LPOVERLAPPED place) -> WINBOOL {
            if (GetFileSize(file, nullptr) == 54 + 3 * width * height) {
                ++waiting;
                WaitForSingleObject(open, INFINITE);
                --waiting;
            }
            return hook.original(file, to, size, done, place);
        }};
};

TEST(Window, OpensTheFileThatWasAskedForLast) {
    static SlowFile slow;
    const ImportHook<HOOK(DrawTextW)> texts(program(), tell);
    const auto slowPath = pictureFile(L"C:\\slow.bmp", SlowFile::width, SlowFile::height);
    const auto other = pictureFile(L"C:\\other.bmp", 100, 80);
    auto shown = std::make_unique<Shown>(false, pictureFile(L"C:\\first.bmp", 200, 150), 1);
    const auto drop = [&](const std::wstring& path) {
        const HGLOBAL memory = GlobalAlloc(GPTR, sizeof(DROPFILES) + (path.size() + 2) * sizeof(wchar_t));
        auto* files = static_cast<DROPFILES*>(memory);
        *files = {sizeof *files, {}, FALSE, TRUE};
        std::memcpy(files + 1, path.c_str(), path.size() * sizeof(wchar_t));
        PostMessageW(shown->window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
    };
    const auto eventually = [&](const auto& condition) {
        const ULONGLONG end = GetTickCount64() + 60000;
        for (Shown::pump(); !condition() && GetTickCount64() < end; Shown::pump()) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
        EXPECT_TRUE(condition()) << talxrend::utf8(told);
    };
    const auto shows = [&](long width, const std::wstring& title) {
        wchar_t text[99];
        GetWindowTextW(shown->window, text, ARRAYSIZE(text));
        return shown->view().picture()->width == width && text == title + L" - talview";
    };
    const auto begins = [&] {
        ResetEvent(slow.open);
        drop(slowPath);
        eventually([&] { return slow.waiting == 1; });
    };
    const auto ends = [&] {
        SetEvent(slow.open);
        eventually([&] { return slow.waiting == 0; });
    };

    drop(other);
    eventually([&] { return shows(100, L"other.bmp"); });
    expectAsDrawnWhole(shown->scene());
    const std::string before = pixelsOf(shown->scene());
    drop(L"C:\\missing.bmp");
    eventually([&] { return told.starts_with(L"cannot open C:\\missing.bmp"); });
    begins();
    shown->command(COMMAND_CANCEL);
    EXPECT_EQ(L"stopped", told);
    ends();
    EXPECT_TRUE(shows(100, L"other.bmp") && before == pixelsOf(shown->scene()));

    begins();
    drop(L"C:\\first.bmp");
    eventually([&] { return shows(200, L"first.bmp"); });
    ends();
    drop(other);
    eventually([&] { return shows(100, L"other.bmp"); });

    begins();
    PostMessageW(shown->window, WM_CLOSE, 0, 0);
    shown->viewer->run(std::nullopt);
    shown.reset();
    EXPECT_EQ(1, slow.waiting);
    ends();
}

struct TheWindow : testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Engines, TheWindow, testing::Bool());

// The menu takes more rows where the window is narrow.
void giveSize(const Shown& shown, long width, long height) {
    RECT frame{}, inner{};
    for (const long step : {900L, height, height}) {
        GetWindowRect(shown.window, &frame);
        GetClientRect(shown.window, &inner);
        SetWindowPos(shown.window, nullptr, 0, 0, frame.right - frame.left + width - inner.right,
                     frame.bottom - frame.top + step - inner.bottom, SWP_NOMOVE | SWP_NOACTIVATE);
    }
    shown.pump();
    EXPECT_TRUE(inner.right == width && inner.bottom == height) << inner.right << " x " << inner.bottom;
}

TEST_P(TheWindow, StaysRightAndLosesNothing) {
    const MakerAndTaker own[] = {{"CreateCompatibleDC", "DeleteDC", 0},
                                 {"CreateCompatibleBitmap", "DeleteObject", 0},
                                 {"CreateDIBSection", "DeleteObject", 0},
                                 {"CreateFontIndirectW", "DeleteObject", 0},
                                 {"GetDC", "ReleaseDC", 1},
                                 {"GetWindowDC", "ReleaseDC", 1}};
    const GdiLeakCheck engine;
    const LeakCheck viewer(program(), own);
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 200, 150), 2.5);
    shown.mark(60, 60);
    shown.command(COMMAND_HISTOGRAM);
    const std::string before = pixelsOf(shown.scene());
    const auto live = std::pair(engine.live(), viewer.live());
    const auto expectAsBefore = [&](const char* what) {
        EXPECT_TRUE(before == pixelsOf(shown.scene())) << what;
        EXPECT_EQ(live, std::pair(engine.live(), viewer.live())) << what;
    };
    for (int i = 0; i < 10; ++i) {
        for (const int id : {COMMAND_ENGINE, COMMAND_LEFT, COMMAND_ENGINE, COMMAND_FULL_SCREEN, COMMAND_RIGHT,
                             COMMAND_FULL_SCREEN, COMMAND_METHOD, COMMAND_FLAGS}) {
            shown.command(id);
        }
        giveSize(shown, 120 + 31 * i, 300);
        giveSize(shown, 320, 240);
        expectAsDrawnWhole(shown.scene());
    }
    expectAsBefore("commands");
    for (const long height : {1, 0}) {
        giveSize(shown, 1, height);
        shown.command(COMMAND_LEFT);
        InvalidateRect(shown.window, nullptr, FALSE);
        shown.command(COMMAND_RIGHT);
        giveSize(shown, 320, 240);
        expectAsBefore("no room");
    }
    ShowWindow(shown.window, SW_MINIMIZE);
    shown.command(COMMAND_ENGINE);
    shown.command(COMMAND_ENGINE);
    ShowWindow(shown.window, SW_RESTORE);
    shown.pump();
    expectAsBefore("minimised");

    DEVMODEW mode{};
    mode.dmSize = sizeof mode;
    EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &mode);
    mode.dmBitsPerPel = 16;
    EXPECT_EQ(DISP_CHANGE_SUCCESSFUL, ChangeDisplaySettingsW(&mode, 0));
    shown.send(WM_DISPLAYCHANGE, 16);
    EXPECT_EQ(16, shown.scene().screenBits());
    expectAsDrawnWhole(shown.scene());
    EXPECT_TRUE(
        std::ranges::equal(before, pixelsOf(shown.scene()), [](BYTE a, BYTE b) { return abs(a - b) <= 16; }));
    EXPECT_EQ(DISP_CHANGE_SUCCESSFUL, ChangeDisplaySettingsW(nullptr, 0));
    shown.send(WM_DISPLAYCHANGE, 32);
    expectAsBefore("display");
}

TEST_P(TheWindow, PrintsAndCopiesWhatItShows) {
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 16, 12), 20);
    shown.view().move(-20, -10);
    const TestContext page(700, 400);
    SetMapMode(page.dc, MM_ANISOTROPIC);
    SetWindowExtEx(page.dc, 10, 20, nullptr);
    SetViewportExtEx(page.dc, 30, -40, nullptr);
    SetWindowOrgEx(page.dc, 5, 7, nullptr);
    SetViewportOrgEx(page.dc, 11, 13, nullptr);
    printTo(page.dc, {50, 20, 650, 380}, shown.scene()); // 480 x 360 pixels in the middle of it
    POINT corners[] = {{5, 7}, {15, 27}};
    LPtoDP(page.dc, corners, 2);
    EXPECT_TRUE(corners[0].x == 11 && corners[0].y == 13 && corners[1].x == 41 && corners[1].y == -27);
    const BitmapBits bits(page.own);
    for (int i = 0; i < 24 * 14; ++i) { // the middles of image pixels, and black beside the picture
        const int column = i % 24 - 4, row = i / 24 - 1;
        const bool isInside = column >= 0 && column < 16 && row >= 0 && row < 12;
        const std::uint32_t grey = isInside ? ((row * 16 + column) * 5 & 0xFF) * 0x10101u : 0;
        ASSERT_EQ(grey, bits.pixel(125 + column * 30, 35 + row * 30) & 0xFFFFFF) << column << ", " << row;
    }

    copyView(shown.window, shown.scene());
    EXPECT_TRUE(OpenClipboard(shown.window));
    const auto* head = static_cast<const BITMAPINFOHEADER*>(GlobalLock(GetClipboardData(CF_DIB)));
    EXPECT_TRUE(head && head->biWidth == 320 && head->biHeight == 240 && head->biBitCount == 24 &&
                pixelsOf(shown.scene()) ==
                    std::string_view(reinterpret_cast<const char*>(head + 1), 320 * 240 * 3));
    CloseClipboard();
}

} // namespace
} // namespace talview::test
