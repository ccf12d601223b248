// What the window makes of files, of another engine or display, of sizes without room, and of paper.
#include "tests/viewer/window/shown.h"

#include "viewer/share/print.h"

#include <shlobj.h>

namespace talview::test {
namespace {

std::wstring told; // the last text of the status line

// Files of one size are not read on while the gate is closed.
constexpr int slowWidth = 64, slowHeight = 32;
const HANDLE gate = CreateEventW(nullptr, TRUE, TRUE, nullptr);
std::atomic<int> waiting = 0;

TEST(Window, OpensTheFileThatWasAskedForLast) {
    const HMODULE program = GetModuleHandleW(nullptr);
    // A reader that was left alone may call it until the program ends.
    static const ImportHook<HOOK(ReadFile)> reading(
        program, [](HANDLE file, LPVOID to, DWORD size, LPDWORD done, LPOVERLAPPED place) {
            if (GetFileSize(file, nullptr) == 54 + 3 * slowWidth * slowHeight) {
                ++waiting;
                WaitForSingleObject(gate, INFINITE);
                --waiting;
            }
            return reading.original(file, to, size, done, place);
        });
    const ImportHook<HOOK(DrawTextW)> telling(program, [](HDC, LPCWSTR text, int, LPRECT, UINT) {
        told = text;
        return 1;
    });
    const auto slow = pictureFile(L"C:\\slow.bmp", slowWidth, slowHeight);
    const auto other = pictureFile(L"C:\\other.bmp", 100, 80);
    auto shown = std::make_unique<Shown>(false, pictureFile(L"C:\\first.bmp", 200, 150), L"1");
    const auto eventually = [&](const auto& condition) {
        for (int i = 0; !condition() && i < 6000; ++i) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
            Shown::pump();
        }
        EXPECT_TRUE(condition()) << talxrend::utf8(told);
    };
    const auto drop = [&](const std::wstring& path, const auto& condition) {
        const HGLOBAL memory = GlobalAlloc(GPTR, sizeof(DROPFILES) + (path.size() + 2) * sizeof(wchar_t));
        auto* files = static_cast<DROPFILES*>(memory);
        *files = {sizeof *files, {}, FALSE, TRUE};
        std::copy(path.begin(), path.end(), reinterpret_cast<wchar_t*>(files + 1));
        PostMessageW(shown->window, WM_DROPFILES, reinterpret_cast<WPARAM>(memory), 0);
        eventually(condition);
    };
    const auto isOther = [&] {
        return shown->view().picture()->width == 100;
    };
    const auto isWaiting = [] {
        return waiting == 1;
    };
    const auto release = [&] {
        SetEvent(gate);
        eventually([] { return waiting == 0; });
        ResetEvent(gate);
    };
    drop(other, isOther);
    const std::string before = pixelsOf(shown->scene());
    drop(L"C:\\missing.bmp", [] { return told.starts_with(L"cannot open C:\\missing.bmp"); });
    ResetEvent(gate);
    drop(slow, isWaiting);
    shown->command(COMMAND_CANCEL);
    EXPECT_EQ(L"stopped", told);
    release();
    EXPECT_TRUE(before == pixelsOf(shown->scene()));
    drop(slow, isWaiting);
    drop(L"C:\\first.bmp", [&] { return shown->view().picture()->width == 200; });
    release();
    drop(other, isOther);
    drop(slow, isWaiting);
    PostMessageW(shown->window, WM_CLOSE, 0, 0);
    shown->viewer.run(std::nullopt);
    shown.reset();
    EXPECT_TRUE(isWaiting());
    release();
}

struct TheWindow : testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Engines, TheWindow, testing::Bool());

TEST_P(TheWindow, IsRightOnADisplayThatHasChanged) {
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 200, 150), L"2.5");
    const std::string before = pixelsOf(shown.scene());
    DEVMODEW mode{};
    mode.dmSize = sizeof mode;
    EnumDisplaySettingsW(nullptr, ENUM_CURRENT_SETTINGS, &mode);
    for (const int bits : {16, 32}) {
        mode.dmBitsPerPel = bits;
        EXPECT_EQ(DISP_CHANGE_SUCCESSFUL, ChangeDisplaySettingsW(&mode, 0));
        shown.send(WM_DISPLAYCHANGE, bits, 0);
        EXPECT_EQ(bits, shown.scene().screenBits());
        EXPECT_TRUE(std::ranges::equal(before, pixelsOf(shown.scene()),
                                       [&](BYTE a, BYTE b) { return abs(a - b) <= (bits == 16 ? 8 : 0); }));
    }
}

TEST_P(TheWindow, IsPrintedIntoTheMiddleOfThePage) {
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 16, 12), L"20");
    shown.view().move(-20, -10);
    const TestContext page(700, 400);
    SetMapMode(page.dc, MM_ANISOTROPIC);
    SetWindowExtEx(page.dc, 10, 20, nullptr);
    SetViewportExtEx(page.dc, 30, -40, nullptr);
    SetViewportOrgEx(page.dc, 11, 13, nullptr);
    printTo(page.dc, {50, 20, 650, 380}, shown.scene()); // 480 x 360 pixels
    POINT there{10, 20};
    LPtoDP(page.dc, &there, 1);
    EXPECT_TRUE(there.x == 41 && there.y == -27);
    const BitmapBits bits(page.own);
    for (int i = 0; i < 18 * 14; ++i) { // the middles of image pixels, and black beside the picture
        const int column = i % 18 - 1, row = i / 18 - 1;
        const bool isInside = column >= 0 && column < 16 && row >= 0 && row < 12;
        const std::uint32_t grey = isInside ? ((row * 16 + column) * 5 & 0xFF) * 0x10101u : 0;
        ASSERT_EQ(grey, bits.pixel(125 + column * 30, 35 + row * 30) & 0xFFFFFF) << column << ", " << row;
    }
}

} // namespace
} // namespace talview::test
