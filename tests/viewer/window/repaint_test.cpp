// What is drawn again: no more than what has changed, and as if everything had been.
#include "tests/pixels/random_rows.h"
#include "tests/viewer/window/shown.h"

#include "viewer/scene/overlay_bar.h"

namespace talview::test {
namespace {

constexpr RECT whole{0, 0, 320, 240};

// The first call that reaches outside all of the rectangles. Where the picture is moved, that and the screen
// do not count.
std::string beyond(const std::vector<Call>& calls, const std::vector<RECT>& allowed, bool isMoved) {
    for (const auto& [function, rect] : calls) {
        const bool isInside = std::any_of(allowed.begin(), allowed.end(), [&](const RECT& box) {
            RECT all;
            return UnionRect(&all, &box, &rect) && EqualRect(&all, &box);
        });
        if (!isInside && !(isMoved && (function == "IntersectClipRect" || function == "RefreshScreen"))) {
            return " " + function + " at " + std::to_string(rect.left) + "," + std::to_string(rect.top);
        }
    }
    return calls.empty() ? " nothing" : "";
}

// Small changes one after the other, and what of them draws too much.
std::string drawnTooMuch(Shown& shown, EngineCalls& calls) {
    std::string found;
    static_cast<void>(calls.take());
    const auto check = [&](const std::string& what, const std::vector<RECT>& allowed, bool isMoved = false) {
        const std::string calledBeyond = beyond(calls.take(), allowed, isMoved);
        found += calledBeyond.empty() ? "" : what + calledBeyond;
        expectAsDrawnWhole(shown.scene());
        static_cast<void>(calls.take());
    };
    const auto marker = [&] {
        return Scene::rectOf(shown.view().markerBox(shown.view().markers().back()));
    };
    const RECT bar = ColorBar::place({320, 240}, 96, OverlayFont(96));
    shown.mark(50, 50);
    const RECT first = marker();
    check("added", {first});
    shown.drag(WM_LBUTTONDOWN, {50, 50}, {90, 70});
    const RECT last = marker();
    check("moved", {first, last});
    shown.command(COMMAND_COLOR_BAR);
    check("bar", {bar});
    shown.command(COMMAND_COLOR_BAR);
    check("no bar", {bar});
    shown.drag(WM_MBUTTONDOWN, {100, 100}, {107, 95});
    check("pan", {{0, 0, 7, 240}, {0, 235, 320, 240}}, true);
    shown.drag(WM_MBUTTONDOWN, {107, 95}, {100, 100});
    check("pan back", {{313, 0, 320, 240}, {0, 0, 320, 5}}, true);
    shown.mark(90, 70);
    check("removed", {last});
    const RECT uncovered{10, 20, 30, 40};
    InvalidateRect(shown.window, &uncovered, FALSE);
    shown.pump();
    const auto refreshed = calls.take();
    EXPECT_TRUE(!refreshed.empty() && refreshed.front().function == "RefreshScreen");
    return found + beyond(refreshed, {uncovered}, false);
}

struct WindowRepaint : testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Engines, WindowRepaint, testing::Bool());

TEST_P(WindowRepaint, TouchesNoMoreThanWhatHasChanged) {
    Shown shown(GetParam(), pictureFile(L"C:\\shown.bmp", 200, 150), 1.5);
    EngineCalls calls(shown.scene().engine().object().Get());
    std::string found = "not yet";
    for (int i = 0; i < 5 && !found.empty(); ++i) { // the system may uncover a new window when it likes
        found = drawnTooMuch(shown, calls);
    }
    EXPECT_EQ("", found);

    shown.command(COMMAND_METHOD);
    static_cast<void>(calls.take());
    shown.command(COMMAND_LEFT); // the centre-aligned method counts from the edges of what it draws
    EXPECT_TRUE(EqualRect(&whole, &calls.take().at(0).rect));
    shown.command(COMMAND_RIGHT);

    POINT at{100, 100};
    ClientToScreen(shown.window, &at);
    static_cast<void>(calls.take());
    for (int i = 0; i < 100; ++i) {
        PostMessageW(shown.window, WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA / 10), MAKELPARAM(at.x, at.y));
    }
    shown.pump();
    EXPECT_GE(20u, calls.take().size()); // up to seven each time that it is drawn
    EXPECT_NEAR(1.5 * std::pow(1.25, 10), shown.view().placement().scale(), 1e-9);
    EXPECT_EQ(20 + std::lround(80 * (1 - std::pow(1.25, 10))), shown.view().placement().left());
    expectAsDrawnWhole(shown.scene());
}

Picture randomPicture(Random& random) {
    Picture picture{static_cast<PictureKind>(random.between(0, 3)), 60, 45, 8, {}, {}, {}, {}, 0, {}, {}};
    const auto make = [&](auto& block) {
        block = std::remove_reference_t<decltype(block)>(60 * 45);
        random.fill(block.data(), block.size() * sizeof block[0]);
    };
    std::for_each(picture.bytes.begin(), picture.bytes.end(), make);
    if (picture.kind == PictureKind::grey16 || picture.kind == PictureKind::range16) {
        picture.depth = 16;
        make(picture.words);
        make(picture.mask);
    }
    return picture;
}

void change(Random& random, View& view) {
    const auto number = [&](int low, int high) {
        return static_cast<double>(random.between(low, high));
    };
    const Point place{number(-3, 63), number(-3, 48)};
    const auto count = view.markers().size();
    OverlayState overlays = view.overlays();
    bool* const switches[] = {&overlays.grid, &overlays.colorBar, &overlays.histogram, &overlays.profile,
                              &overlays.help};
    bool& turned = *switches[random.between(0, random.oneIn(4) ? 4 : 3)];
    switch (random.between(0, 10)) {
    case 0:
        return count < 5 ? view.addMarker(place) : view.setMarkers({place, {place.y, place.x}});
    case 1:
        return count > 0 ? view.moveMarker(random.word() % count, place) : view.showNextMarker();
    case 2:
        return count > 0 ? view.removeMarker(random.word() % count) : view.center();
    case 3:
        turned = !turned;
        return view.setOverlays(overlays);
    case 4:
        overlays.line = {place, {number(0, 60), number(0, 45)}};
        return view.setOverlays(overlays);
    case 5:
        return view.setLimits({place.x, place.x + number(1, 40000)});
    case 6:
        return random.oneIn(2) ? view.nextMap() : random.oneIn(2) ? view.toggleFlags() : view.toggleMask();
    case 7:
        return random.oneIn(2) ? view.center() : view.showNextMarker();
    default:
        return view.move(random.between(-25, 25), random.between(-25, 25));
    }
}

TEST_P(WindowRepaint, EqualsDrawingEverythingAfterAnyChanges) {
    runCases(8, [&](Random& random) {
        const TestWindow window(10, 10, 230, 170);
        Options options;
        options.scale = std::array{1.0, 2.7, 17.3, 60.5}[random.number % 4];
        options.centre = random.number % 8 >= 4;
        options.at = Point{-20, 5};
        options.colorBar = options.histogram = true;
        options.profile = {{2, 3}, {12, 9}};
        const Image image(randomPicture(random));
        View view(options);
        view.setPicture(&image.picture(), false);
        std::optional<Scene> scene;
        const auto start = [&] {
            scene.reset();
            scene.emplace(window.handle(), view, GetParam()).setImage(image.object());
        };
        start();
        for (int step = 0; step < 150 && !HasFailure(); ++step) {
            SCOPED_TRACE(step);
            for (int i = random.between(1, 3); i > 0; --i) {
                change(random, view);
            }
            if (random.oneIn(30)) {
                MoveWindow(window.handle(), 10, 10, random.between(100, 300), random.between(1, 200), FALSE);
                scene->resize();
            }
            expectAsDrawnWhole(*scene);
        }
        const std::string shown = pixelsOf(*scene);
        start(); // an engine to which everything is new
        EXPECT_TRUE(shown == pixelsOf(*scene));
    });
}

} // namespace
} // namespace talview::test
