// What is drawn again: no more than what has changed, and as if everything had been.
#include "tests/pixels/random_rows.h"
#include "tests/viewer/window/shown.h"

#include "viewer/scene/overlay_bar.h"

namespace talview::test {
namespace {

struct WindowRepaint : testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Engines, WindowRepaint, testing::Bool());

// Sums of the areas that functions of an engine are given.
struct EngineCalls {
    using Areas = std::map<std::string, int>;
    explicit EngineCalls(void** table) // before each name, which of the arguments is the left side
        : gate({{"", "2 BeginLayerUpdate", table + 8},
                {"", "6 DrawImage", table + 10},
                {"", "2 Fill", table + 11},
                {"", "3 RefreshScreen", table + 14},
                {"", "8 DrawIcon8", table + 36}},
               [this](const ImportedCall& call) {
                   const auto side = [&](int i) {
                       return static_cast<int>(
                           reinterpret_cast<std::intptr_t>(call.arguments[call.function[0] - '0' + i]));
                   };
                   areas[call.function.substr(2)] += (side(2) - side(0)) * (side(3) - side(1));
                   return std::nullopt;
               }) {}
    Areas take() { return std::exchange(areas, {}); }
    Areas areas;
    const ImportGate gate;
};
constexpr int whole = 320 * 240;

void drag(const Shown& shown, UINT down, LPARAM from, LPARAM to) {
    shown.send(down, 0, from);
    shown.send(WM_MOUSEMOVE, 0, to);
    shown.send(down + 1, 0, 0);
}

// Small changes one after the other. Answers what is drawn too much of them.
std::string drawnTooMuch(Shown& shown, EngineCalls& calls) {
    std::string found;
    const auto check = [&](const char* change, int drawn, int shownAgain) {
        Shown::pump();
        EngineCalls::Areas areas = calls.take();
        EXPECT_GE(areas["RefreshScreen"], std::max(areas["BeginLayerUpdate"], drawn ? 1 : shownAgain))
            << change;
        for (const auto& [function, area] : areas) {
            found +=
                area <= (function == "RefreshScreen" ? shownAgain : drawn) ? "" : change + (" " + function);
        }
        expectAsDrawnWhole(shown.scene());
        calls.take();
    };
    constexpr int marker = markerSize * markerSize;
    const RECT bar = ColorBar::place({320, 240}, 96, OverlayFont(96)), uncovered{10, 20, 30, 40};
    calls.take();
    shown.send(WM_LBUTTONDOWN, MK_SHIFT, MAKELPARAM(50, 50));
    check("added", marker, marker);
    drag(shown, WM_LBUTTONDOWN, MAKELPARAM(50, 50), MAKELPARAM(90, 70));
    check("moved", 2 * marker, 2 * marker);
    for (const char* change : {"bar", "no bar"}) {
        shown.command(COMMAND_COLOR_BAR);
        check(change, (bar.right - bar.left) * (bar.bottom - bar.top),
              (bar.right - bar.left) * (bar.bottom - bar.top));
    }
    drag(shown, WM_MBUTTONDOWN, MAKELPARAM(50, 50), MAKELPARAM(57, 45));
    check("pan", 7 * 240 + 313 * 5, whole);
    shown.send(WM_LBUTTONDOWN, MK_SHIFT, MAKELPARAM(97, 65));
    check("removed", marker, marker);
    InvalidateRect(shown.window, &uncovered, FALSE);
    check("uncovered", 0, 20 * 20);
    return found;
}

TEST_P(WindowRepaint, TouchesNoMoreThanWhatHasChanged) {
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 200, 150), L"1.5");
    EngineCalls calls(*reinterpret_cast<void***>(shown.scene().engine().object().Get()));
    std::string found = "not yet";
    for (int i = 0; i < 5 && !found.empty(); ++i) { // the system may uncover a new window when it likes
        found = drawnTooMuch(shown, calls);
    }
    EXPECT_EQ("", found);
    shown.command(COMMAND_METHOD); // to the centre-aligned one, which counts from the edges of what it draws
    Shown::pump();
    shown.send(WM_LBUTTONDOWN, MK_SHIFT, MAKELPARAM(52, 51));
    drag(shown, WM_LBUTTONDOWN, MAKELPARAM(52, 51), MAKELPARAM(54, 51)); // by fewer than three pixels
    expectAsDrawnWhole(shown.scene());
    calls.take();
    shown.command(COMMAND_LEFT);
    Shown::pump();
    EXPECT_EQ(whole, calls.take()["BeginLayerUpdate"]);

    const Point before = shown.view().placement().toImage({100, 100});
    POINT at{100, 100};
    ClientToScreen(shown.window, &at);
    for (int i = 0; i < 100; ++i) {
        PostMessageW(shown.window, WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA / 10), MAKELPARAM(at.x, at.y));
    }
    shown.pump();
    EXPECT_GE(3 * whole, calls.take()["BeginLayerUpdate"]);
    EXPECT_NEAR(1.5 * std::pow(1.25, 10), shown.view().placement().scale(), 1e-9);
    EXPECT_NEAR(before.x, shown.view().placement().toImage({100, 100}).x, 0.1);
    expectAsDrawnWhole(shown.scene());
}

constexpr int commands[] = {COMMAND_METHOD,      COMMAND_MAP,          COMMAND_LIMITS_AUTO, COMMAND_FLAGS,
                            COMMAND_LEVEL_UP,    COMMAND_WINDOW_WIDER, COMMAND_FULL_SCREEN, COMMAND_CENTRE,
                            COMMAND_ENGINE,      COMMAND_GRID,         COMMAND_COLOR_BAR,   COMMAND_HISTOGRAM,
                            COMMAND_PROFILE,     COMMAND_HELP,         COMMAND_LEFT,        COMMAND_DOWN,
                            COMMAND_MARKER_NEXT, COMMAND_ZOOM_IN,      COMMAND_ZOOM_OUT};

TEST_P(WindowRepaint, EqualsDrawingEverythingAfterAnything) {
    const GdiLeakCheck engines;
    const LeakCheck program(GetModuleHandleW(nullptr), gdiResources);
    runCases(1, [&](Random& random) {
        Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 60, 45), L"5");
        const auto place = [&] {
            return MAKELPARAM(random.between(0, 320), random.between(0, 240));
        };
        const auto act = [&] {
            switch (random.between(0, 9)) {
            case 0:
                shown.send(WM_LBUTTONDOWN, MK_SHIFT, place());
                break;
            case 1:
                shown.view().zoomTo({160, 120}, random.oneOf({1.0, 2.7, 17.3, 60.5}));
                shown.view().center();
                break;
            case 2: {
                const int size = random.between(1, 400);
                MoveWindow(shown.window, 0, 0, random.oneOf({1, size, 400}), random.oneOf({size, 300}),
                           FALSE);
                ShowWindow(shown.window, random.oneOf({SW_MINIMIZE, SW_RESTORE, SW_RESTORE}));
                break;
            }
            case 3:
            case 4:
                drag(shown, WM_LBUTTONDOWN, place(), place());
                break;
            case 5:
                drag(shown, WM_MBUTTONDOWN, MAKELPARAM(150, 100), MAKELPARAM(random.between(120, 180), 110));
                break;
            default:
                shown.command(commands[random.word() % std::size(commands)]);
            }
        };
        for (int step = 0; step < 250 && !HasFailure(); ++step) {
            SCOPED_TRACE(step);
            for (int i = random.between(1, 3); i > 0; --i) {
                act();
            }
            random.oneIn(2) ? Shown::pump() : void();
            expectAsDrawnWhole(shown.scene());
            if (step % 40 == 0) {
                ShowWindow(shown.window, SW_RESTORE);
                MoveWindow(shown.window, 0, 0, 400, 300, FALSE);
                shown.command(COMMAND_GRID); // ends the message of whatever came before
                shown.command(COMMAND_GRID);
                const std::string before = pixelsOf(shown.scene());
                shown.command(COMMAND_ENGINE);
                shown.command(COMMAND_ENGINE); // to which everything is new
                EXPECT_TRUE(before == pixelsOf(shown.scene()));
            }
        }
    });
}

} // namespace
} // namespace talview::test
