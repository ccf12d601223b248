// The model against examples worked by hand.
#include "tests/model/model.h"

#include "render/pixels/geometry.h"

#include <gtest/gtest.h>

namespace talx::model {
namespace {

using Pixels = std::vector<std::uint32_t>;

TEST(Model, Sampling) {
    const struct {
        int method, width;
        double scale;
        int left;
        std::vector<int> seen; // the source columns, from left on; -1: none
    } examples[] = {
        {nearestMethod, 4, 3.0, 5, {1, 2, 2, 2, 3}},
        {nearestMethod, 9, 3.0, 11, {3, 4, 4, 4, 5}},  // 11 is the last of its block
        {nearestMethod, 4, 3.0 + 2e-10, 8, {2, 2, 3}}, // no blocks: 9 / scale < 3
        {nearestMethod, 4, 2.00000000005, 2, {1, 1, 2, 2}},
        {nearestMethod, 10, 0.25, 0, {0, 4, 8}},
        {centreMethod, 4, 2.0, 0, {0, 0, 0, 1, 1, 2, 2, 2}}, // 1 to 6 are inner columns
        {centreMethod, 8, 0.5, 0, {1, 1, 3, 3}},             // 1 and 2
        {centreMethod, 4, 8.0, 29, {2, 2, 2}},               // all behind the last inner one, 27
        {centreMethod, 4, 8.0, 0, {0, 0, 0}},                // all before the first one, 4
        {centreMethod, 4, 8.0, 0, {-1, -1}},                 // too thin
    };
    for (const auto& [method, width, scale, left, seen] : examples) {
        const Rect target{left, 0, left + static_cast<int>(seen.size()), 5};
        for (std::size_t i = 0; i < seen.size(); ++i) {
            const auto p = sourceOf(width, 9, scale, target, method, left + i, 0);
            EXPECT_EQ(seen[i], p ? p->x : -1) << "scale " << scale << ", column " << left + i;
        }
    }
    // One source row can never be computed: the nearest method shows the last column, too.
    EXPECT_EQ(3, sourceOf(4, 1, 4.0, {0, 0, 16, 4}, centreMethod, 15, 0)->x);
}

TEST(Model, Values) {
    EXPECT_EQ((Rect{10, 20, 35, 33}), place(10, 20, 100, 50, 0.25)); // 12.5 becomes 13
    EXPECT_EQ((Rect{0, 0, -2, 0}), place(0, 0, 5, 1, -0.5));         // -2.5 becomes -2
    EXPECT_TRUE(isUnitScale(1.00000000005) && !isUnitScale(1.0000000001) && !isUnitScale(0.9999999999));

    EXPECT_EQ(0x7C41u, pack(15, {0xFF, 0x10, 0x0F}));
    EXPECT_EQ(0xF881u, pack(16, {0xFF, 0x10, 0x0F}));
    EXPECT_EQ(0x010101u, greyPixel8(24, {}, 1)); // no entry: the ramp
    const std::vector<Color> red(10, {255, 0, 0});
    EXPECT_EQ(0xF800u, greyPixel16(16, red, valueCount(2), 0xF009)); // 12 bits count: the last entry
    EXPECT_EQ(0x010101u, greyPixel16(32, red, valueCount(2), 16));   // value / 16
    EXPECT_EQ(0xFBDFu, maskPixel(15, 0xFFFFFF));                     // (-8 * 32 - 8) * 4 - 1
    EXPECT_EQ(0xF7BFu, maskPixel(16, 0xFFFFFF));                     // (-8 * 16 - 4) * 16 - 1

    EXPECT_EQ(38u, iconWeight(30));                                    // 38.4
    EXPECT_EQ(127u, iconWeight(99));                                   // 126.72
    EXPECT_EQ(0x4096644Bu, blend(32, 0x81646464, {200, 100, 51}, 64)); // half of each, the highest byte too
    EXPECT_EQ(0xAF643Fu, blend(32, 0x81646464, {200, 100, 51}, 32));   // (100 * 32 + 200 * 96) / 128 ...
}

} // namespace
} // namespace talx::model
