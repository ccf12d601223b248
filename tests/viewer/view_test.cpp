// The state of the view: what input does to it, and what has to be drawn again for that.
#include "viewer/view/pointer_input.h"
#include "viewer/view/view.h"

#include <gtest/gtest.h>

#include <numeric>

namespace talview {
namespace {

struct ViewState : testing::Test {
    ViewState() : view((options.scale = 4, options.at = Point{10, 20}, options)), input(view) {
        picture.kind = PictureKind::grey16;
        picture.width = 100;
        picture.height = 50;
        picture.depth = 16;
        picture.words = Block<std::uint16_t>(5000);
        std::iota(picture.words.data(), picture.words.data() + 5000, std::uint16_t{1000});
        view.resize(400, 300);
        view.setPicture(picture, false);
        EXPECT_EQ(work().boxes, std::vector{view.extent()});
    }
    Repair work() { return view.damage().take({}, {}); }
    bool isWhole() {
        const Repair repair = work();
        return repair.dx == 0 && repair.dy == 0 && repair.boxes == std::vector{view.extent()};
    }
    void drag(MouseButton button, Point from, Point to) {
        input.press(button, from, false);
        input.move({(from.x + to.x) / 2, (from.y + to.y) / 2});
        input.move(to);
        input.release();
        input.move({0, 0}); // nothing any more
    }

    Picture picture;
    Options options;
    View view;
    PointerInput input;
};

TEST_F(ViewState, ZoomsKeepWhatIsUnderThePointer) {
    for (const double notches : {1.0, 3.0, -2.5, 40.0, -90.0}) {
        const Point at{123, 217};
        const double scale = view.placement().scale();
        const Point before = view.placement().toImage(at);
        input.wheel(at, notches);
        const Point after = view.placement().toView(before);
        // The image lies at whole pixels, before and after.
        const double rounding = 0.501 + 0.501 * view.placement().scale() / scale;
        EXPECT_NEAR(after.x, at.x, rounding);
        EXPECT_NEAR(after.y, at.y, rounding);
        EXPECT_TRUE(isWhole());
    }
    EXPECT_EQ(view.placement().scale(), 1.0 / 32);
    input.wheel({0, 0}, 100);
    EXPECT_EQ(view.placement().scale(), 64);
}

TEST_F(ViewState, DragsMoveWhatIsThere) {
    drag(MouseButton::left, {100, 100}, {108, 94});
    EXPECT_EQ(view.placement().left(), 18);
    EXPECT_EQ(view.placement().top(), 14);
    const Repair repair = work();
    EXPECT_EQ(repair.dx, 8);
    EXPECT_EQ(repair.dy, -6);
    long pixels = 0;
    for (const Box& box : repair.boxes) {
        pixels += box.width() * box.height();
    }
    EXPECT_EQ(pixels, 8 * 300 + 6 * 400 - 8 * 6);
    view.nextMethod();
    EXPECT_TRUE(isWhole());
    drag(MouseButton::middle, {100, 100}, {108, 94});
    EXPECT_TRUE(isWhole()) << "the centre-aligned method counts from the edges";
    drag(MouseButton::left, {0, 0}, {-900, 0});
    EXPECT_EQ(view.placement().left(), 10 + 8 + 8 - 900);
}

TEST_F(ViewState, MarkersTouchOnlyTheirPlaces) {
    input.press(MouseButton::left, {51, 61}, true); // image pixel (10, 10), from (50, 60)
    ASSERT_EQ(view.markers(), std::vector({Point{10, 10}}));
    const Box box{52 - 12, 62 - 12, 52 + 13, 62 + 13};
    EXPECT_EQ(view.markerBox({10, 10}), box);
    EXPECT_EQ(work().boxes, std::vector{box});
    drag(MouseButton::left, {41, 51}, {241, 51});
    ASSERT_EQ(view.markers(), std::vector({Point{60, 10}}));
    EXPECT_EQ(view.placement().left(), 10);
    EXPECT_EQ(work().boxes.size(), 3); // also where it was on its way
    input.press(MouseButton::left, {241, 51}, true);
    EXPECT_TRUE(view.markers().empty());
    EXPECT_EQ(work().boxes.size(), 1);
    view.addMarker({-1000, 5});
    EXPECT_TRUE(view.damage().isEmpty()); // out of view
    Picture other;
    other.width = other.height = 9;
    other.bytes[0] = Block<std::uint8_t>(81);
    view.setPicture(other, false);
    EXPECT_TRUE(view.markers().empty());
}

TEST_F(ViewState, ContrastBeginsAtTheDataAndGoesBackThere) {
    const Limits opened{1000, 5999};
    EXPECT_EQ(view.coloring().limits, opened);
    view.showWholeDepth();
    EXPECT_EQ(view.coloring().limits, (Limits{0, 65535}));
    EXPECT_TRUE(isWhole());
    view.resetContrast();
    drag(MouseButton::right, {100, 100}, {356, 100});
    EXPECT_EQ(view.coloring().limits, (Limits{5999, 10998}));
    EXPECT_TRUE(isWhole());
    drag(MouseButton::right, {100, 100}, {100, 100});
    EXPECT_TRUE(view.damage().isEmpty());
    Picture same = std::move(picture);
    view.setPicture(same, true);
    EXPECT_EQ(view.coloring().limits, (Limits{5999, 10998}));
    Picture scaled; // where the limits mean what they did
    scaled.kind = PictureKind::grey16;
    scaled.width = scaled.height = 1;
    scaled.depth = 16;
    scaled.words = Block<std::uint16_t>(1);
    scaled.words[0] = 7;
    scaled.scale = {0.5, 1000, L""};
    view.setPicture(scaled, true);
    EXPECT_EQ(view.coloring().limits, (Limits{9998, 19996}));
    view.setPicture(same, true);
    EXPECT_EQ(view.coloring().limits, (Limits{5999, 10998}));
    view.showDataLimits();
    EXPECT_EQ(view.coloring().limits, opened);
}

TEST_F(ViewState, LinesOfTheProfileTouchOnlyTheirPlaces) {
    OverlayState overlays = view.overlays();
    overlays.profile = true;
    view.setOverlays(overlays);
    drag(MouseButton::left, {100, 100}, {200, 140});
    ASSERT_TRUE(view.overlays().line);
    EXPECT_EQ(view.placement().left(), 10);
    for (const Box& box : work().boxes) {
        EXPECT_TRUE(box.left >= 95 && box.top >= 95 && box.right <= 206 && box.bottom <= 146);
    }
    overlays.help = true;
    view.setOverlays(overlays);
    EXPECT_TRUE(isWhole());
}

} // namespace
} // namespace talview
