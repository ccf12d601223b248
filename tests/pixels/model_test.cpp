// The model itself against examples worked by hand.
#include "tests/model/model.h"

#include <gtest/gtest.h>

namespace talx::model {
namespace {

constexpr Rect everywhere{-100000, -100000, 100000, 100000};

// The source columns seen in the columns from left to right of a scaled image.
std::vector<int> columns(int width, double scale, int left, int right, int method) {
    std::vector<int> result;
    for (int x = left; x < right; ++x) {
        const auto p = sourceOf(width, 9, scale, {left, 0, right, 5}, method, x, 0);
        result.push_back(p ? static_cast<int>(p->x) : -1);
    }
    return result;
}
using Columns = std::vector<int>;

TEST(Model, Sampling) {
    EXPECT_EQ((Columns{1, 2, 2, 2, 3}), columns(4, 3.0, 5, 10, nearestMethod));
    EXPECT_EQ((Columns{3, 3, 4, 4, 4}), columns(9, 3.0, 11, 16, nearestMethod));  // 11 has phase 1, not 2
    EXPECT_EQ((Columns{2, 2, 3}), columns(4, 3.0 + 2e-10, 8, 11, nearestMethod)); // no blocks: 9 / scale < 3
    EXPECT_EQ((Columns{1, 1, 2, 2}),
              columns(4, 2.00000000005, 2, 6, nearestMethod)); // 2 has phase 2: the next
    EXPECT_EQ((Columns{0, 0, 1, 2, 2, 3}), columns(4, 1.5, 0, 6, nearestMethod));
    EXPECT_EQ((Columns{0, 4, 8}), columns(10, 0.25, 0, 3, nearestMethod));

    EXPECT_EQ((Columns{0, 0, 0, 1, 1, 2, 2, 2}),
              columns(4, 2.0, 0, 8, centreMethod));                        // 1 to 6 are inner columns
    EXPECT_EQ((Columns{1, 1, 3, 3}), columns(8, 0.5, 0, 4, centreMethod)); // 1 and 2
    EXPECT_EQ((Columns{2, 2, 2}), columns(4, 8.0, 29, 32, centreMethod)); // all behind the last inner one, 27
    EXPECT_EQ((Columns{0, 0, 0}), columns(4, 8.0, 0, 3, centreMethod));   // all before the first one, 4
    EXPECT_EQ((Columns{-1, -1}), columns(4, 8.0, 0, 2, centreMethod));    // too thin
    // One source row can never be computed: the nearest method shows the last column, too.
    EXPECT_EQ(2, sourceOf(4, 2, 4.0, {0, 0, 16, 4}, centreMethod, 15, 0)->x);
    EXPECT_EQ(3, sourceOf(4, 1, 4.0, {0, 0, 16, 4}, centreMethod, 15, 0)->x);
}

TEST(Model, PlacesAndClipsAnImage) {
    EXPECT_EQ((Rect{10, 20, 60, 45}), place(10, 20, 100, 50, 0.5));
    const Image image{Kind::grey8, {{3, 2, {0, 1, 2, 16, 17, 18}}}, 0};
    Layer layer{32, 4, 2, std::vector<std::uint32_t>(8, 7)};
    drawImage(layer, image, {}, 0, 0, 2.0, {1, 1, 3, 4}, centreMethod); // two columns are left: too thin
    EXPECT_EQ((std::vector<std::uint32_t>(8, 7)), layer.pixels);
    drawImage(layer, image, {}, 1, -1, 1.0, {-5, -5, 3, 50}, nearestMethod);
    EXPECT_EQ((std::vector<std::uint32_t>{7, 0x101010, 0x111111, 7, 7, 7, 7, 7}), layer.pixels);
}

TEST(Model, ColorsOfTheKinds) {
    ColorState colors;
    colors.grey8 = {{1, 2, 3}};
    colors.paletteIndex[1] = 99;
    colors.grey16.assign(10, {255, 0, 0});
    colors.maskEnabled = true;
    colors.maskColor = 0x12FFFFFF;
    const auto drawn = [&](int format, Kind kind, const std::vector<std::uint16_t>& values) {
        Image image{kind, {}, 2};
        for (const std::uint16_t value : values) {
            image.planes.push_back({1, 1, {value}});
        }
        Layer layer{format, 1, 1, {0x5A}};
        drawImage(layer, image, colors, 0, 0, 1.0, everywhere, nearestMethod);
        return layer.at(0, 0);
    };
    EXPECT_EQ(0x010203u, drawn(24, Kind::grey8, {0}));
    EXPECT_EQ(0x010101u, drawn(24, Kind::grey8, {1})); // no entry: the ramp
    EXPECT_EQ(99u, drawn(8, Kind::grey8, {1}));
    EXPECT_EQ(0x5Au, drawn(8, Kind::grey16, {3}));
    EXPECT_EQ(0xF800u, drawn(16, Kind::grey16, {0xF009})); // 12 bits count: the last entry
    EXPECT_EQ(0x010101u, drawn(32, Kind::grey16, {16}));   // value / 16
    EXPECT_EQ(0x7C41u, drawn(15, Kind::color, {0xFF, 0x10, 0x0F}));
    EXPECT_EQ(0xF881u, drawn(16, Kind::color, {0xFF, 0x10, 0x0F}));
    EXPECT_EQ(0xF7BFu, drawn(16, Kind::range16, {0x8000, 0}));
    EXPECT_EQ(0x12FFFFFFu, drawn(32, Kind::range16, {0x8000, 0}));
    EXPECT_EQ(0x808080u, drawn(32, Kind::range16, {0x8000, 1}));
    EXPECT_EQ(0x808080u, drawn(32, Kind::range16, {0x8000}));
}

TEST(Model, Icons) {
    using Pixels = std::vector<std::uint32_t>;
    Icon icon{{3, 1, {0, 1, 2}}, {}, {0, 50, 100}};
    icon.colors.fill({200, 100, 51});
    Layer layer{32, 5, 1, Pixels(5, 0x81646464)};
    drawIcon(layer, icon, 1.7, -0.9, 1.0, everywhere, {}); // its lower edge is cut to 0 as well
    EXPECT_EQ(Pixels(5, 0x81646464), layer.pixels);
    drawIcon(layer, icon, 1.7, 0.9, 1.0, everywhere, {}); // half of each, the highest byte too
    EXPECT_EQ((Pixels{0x81646464, 0x00C86433, 0x4096644B, 0x81646464, 0x81646464}), layer.pixels);

    icon.transparency = {25, 0, 0};
    layer = {24, 3, 2, Pixels(6, 0x646464)};
    drawIcon(layer, icon, 0, 0, 2.0, {1, 0, 3, 1},
             {}); // 2 x 2 blocks, clipped; (100 * 32 + 200 * 96) / 128 ...
    EXPECT_EQ((Pixels{0x646464, 0xAF643F, 0xC86433, 0x646464, 0x646464, 0x646464}), layer.pixels);

    icon.transparency = {0, 30, 100};
    layer = {8, 4, 1, Pixels(4, 5)};
    drawIcon(layer, icon, 0, 0, 1.0, everywhere, [](Color c) { return c.red; });
    EXPECT_EQ((Pixels{0, 200, 5, 5}), layer.pixels);
}

} // namespace
} // namespace talx::model
