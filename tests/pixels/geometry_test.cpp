// Placing: rounding, cutting, saturating, clipping.
#include "render/pixels/geometry.h"

#include <gtest/gtest.h>

namespace talx {
namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

TEST(Geometry, RoundsHalvesUpCutsTowardZeroAndSaturates) {
    EXPECT_EQ(3, roundHalfUp(2.5));
    EXPECT_EQ(-2, roundHalfUp(-2.5));
    EXPECT_EQ(-2, cut(-2.99));
    for (const double v : {2147483648.0, 1e19, 1e300, infinity}) {
        EXPECT_EQ(highest, cut(v)) << v;
        EXPECT_EQ(lowest, cut(-v - 1.0)) << v;
        EXPECT_EQ(highest, roundHalfUp(v)) << v;
        EXPECT_EQ(lowest, roundHalfUp(-v - 1.0)) << v;
    }
    EXPECT_EQ(0, cut(notANumber));
    EXPECT_EQ(0, roundHalfUp(notANumber));
}

TEST(Geometry, IntersectionIsAllZerosWhenEmpty) {
    const Rect a{0, 0, 10, 10};
    EXPECT_EQ((Rect{3, 0, 10, 5}), intersect(a, {3, -7, 20, 5}));
    EXPECT_EQ(Rect{}, intersect(a, {10, 0, 20, 10})); // they only touch
    EXPECT_EQ(Rect{}, intersect(a, {2, 9, 5, 4}));    // one of them is inside out
    EXPECT_EQ(a, intersect(a, {lowest, lowest, highest, highest}));
}

TEST(Geometry, UnitScaleExcludesItsBounds) {
    EXPECT_TRUE(isUnitScale(1.00000000005) && isUnitScale(0.99999999995));
    EXPECT_FALSE(isUnitScale(1.0000000001) || isUnitScale(0.9999999999) || isUnitScale(notANumber));
}

TEST(Geometry, PlacedImageSaturatesAtEveryEdge) {
    EXPECT_EQ((Rect{10, 20, 60, 45}), placeScaled(10, 20, 100, 50, 0.5));
    EXPECT_EQ((Rect{10, 20, 35, 33}), placeScaled(10, 20, 100, 50, 0.25)); // 12.5 becomes 13
    EXPECT_EQ((Rect{5, lowest, highest, -1}), placeScaled(5, lowest, 7, 7, infinity));
    EXPECT_EQ((Rect{-5, 5, lowest, lowest + 5}), placeScaled(-5, 5, 7, 7, -1e300));
    EXPECT_EQ((Rect{4, 5, 4, 5}), placeScaled(4, 5, 7, 7, notANumber));
    EXPECT_EQ((Rect{4, 5, 4, 5}), placeScaled(4, 5, 0, 0, infinity)); // 0 times infinity is not a number
}

} // namespace
} // namespace talx
