// Contrast, and what overlays show: colours, counts, profiles, marks of axes, grid lines.
#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"
#include "viewer/view/color_maps.h"
#include "viewer/view/contrast.h"
#include "viewer/view/histogram.h"
#include "viewer/view/line_runs.h"
#include "viewer/view/pixel_grid.h"
#include "viewer/view/profile.h"
#include "viewer/view/ticks.h"

#include <cmath>

namespace talview {
namespace {

using namespace talx::test;

double channel(std::uint32_t color, int shift) {
    return color >> shift & 0xFF;
}

TEST(ColorTable, MixesTheColoursOfTheNearestStops) {
    runCases(200, [](Random& random) {
        ColorMap map{L"", {{0, random.word() >> 8}}};
        while (map.stops.back().at < 1) {
            map.stops.push_back(
                {std::min(1.0, map.stops.back().at + random.real(0, 0.5)), random.word() >> 8});
        }
        const std::uint32_t size = 1u << random.between(1, 12);
        Limits limits{random.real(-100, size), 0};
        limits.low = random.oneIn(2) ? std::floor(limits.low) : limits.low;
        limits.high = limits.low + random.oneOf({1.0, 0.25, 255.0, size - 1.0, 1e300});
        const bool flags = random.oneIn(2);
        const auto table = colorTable(map, size, limits, flags ? Flags::on : Flags::off);
        for (std::uint32_t value = 0; value < size; ++value) {
            const bool isHigh = flags && (value > limits.high || value == size - 1);
            if (isHigh || (flags && (value < limits.low || value == 0))) {
                ASSERT_EQ(table[value], isHigh ? highFlag : lowFlag) << value;
                continue;
            }
            const double at = std::clamp((value - limits.low) / (limits.high - limits.low), 0.0, 1.0);
            const auto next = std::find_if(map.stops.begin() + 1, map.stops.end() - 1,
                                           [&](const ColorStop& stop) { return at < stop.at; });
            for (const int shift : {0, 8, 16}) {
                const double wanted = std::lerp(channel(next[-1].color, shift), channel(next->color, shift),
                                                (at - next[-1].at) / (next->at - next[-1].at));
                ASSERT_NEAR(channel(table[value], shift), wanted, 0.5001) << value;
                ASSERT_NEAR(channel(colorOf(value, map, size, limits), shift), wanted, 0.5001) << at;
            }
        }
    });
}

// A colour that sRGB does not have would be cut to one of another lightness.
TEST(ColorTable, LightnessOfTheEvenMapRisesEvenly) {
    const auto& maps = colorMaps();
    const auto even = std::find_if(maps.begin(), maps.end(),
                                   [](const ColorMap& map) { return map.name == std::wstring(L"even"); });
    const auto table = colorTable(*even, 256, Limits{0, 255});
    for (int i = 0; i < 256; ++i) {
        const auto linear = [&](int shift) {
            const double share = channel(table[i], shift) / 255;
            return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
        };
        const double r = linear(16), g = linear(8), b = linear(0);
        const double lightness =
            0.2104542553 * std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b) +
            0.7936177850 * std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b) -
            0.0040720468 * std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
        ASSERT_NEAR(lightness, 0.25 + 0.68 * i / 255, 0.0025) << i;
    }
}

TEST(Contrast, StepsAreInTheWindowsProportion) {
    EXPECT_EQ(dragged({0, 255}, 0, 0, 256), (Limits{0, 255}));
    EXPECT_EQ(dragged({100, 200}, 128, 0, 256), (Limits{150, 250}));
    EXPECT_EQ(dragged({100, 200}, 0, -128, 256), (Limits{125, 175}));
    EXPECT_EQ(dragged({100, 200}, 0, -1e9, 256), (Limits{150, 151}));
    EXPECT_EQ(dragged({0, 256}, 1e9, 0, 256), (Limits{640, 896}));
    EXPECT_EQ(dragged({5000, 5200}, 256, 0, 256), (Limits{5000, 5200})); // no farther, but back
    EXPECT_EQ(dragged({5000, 5200}, -256, 0, 256), (Limits{4800, 5000}));
    EXPECT_EQ(withLevelStep({7, 8}, -1, 256), (Limits{6, 7}));
    EXPECT_EQ(withWindowStep({0, 400}, 4, 256), (Limits{-200, 600}));
    EXPECT_EQ(withWindowStep({10, 12}, 1, 256), (Limits{10, 13}));
    EXPECT_EQ(dragged({1e300, 1.1e300}, 0, -1e5, 256), (Limits{1e300, 1.1e300})); // nothing is so narrow
    EXPECT_EQ(dragged({-1e308, 1e308}, 1, 1, 256), (Limits{-1e308, 1e308}));
}

TEST(Histogram, CountsVisibleValuesBetweenTheLimits) {
    runCases(50, [](Random& random) {
        Picture picture;
        picture.kind = PictureKind::range16;
        picture.depth = random.oneOf({8, 10, 16});
        picture.words = Block<std::uint16_t>(random.between(1, 3000));
        random.fill(picture.words.data(), picture.words.size() * 2);
        picture.mask = Block<std::uint8_t>(random.oneIn(2) ? picture.words.size() : 0);
        random.fill(picture.mask.data(), picture.mask.size());
        const Limits limits{random.real(-500, picture.valueCount()), random.real(0, picture.valueCount())};
        const Histogram counted = histogram(countValues(picture), limits);
        std::vector<std::uint64_t> wanted(counted.bins.empty() ? 0 : counted.bins.at(0).size());
        for (std::size_t i = 0; i < picture.words.size(); ++i) {
            const std::uint32_t value = picture.value(i);
            if (!picture.isHidden(i) && value >= limits.low && value <= limits.high) {
                ++wanted.at((value - counted.first) / counted.perBin);
            }
        }
        ASSERT_TRUE(wanted.size() <= 256 && (wanted.size() > 127 || counted.perBin == 1));
        ASSERT_TRUE(wanted.empty() || counted.bins.at(0) == wanted);
    });
}

TEST(PixelGrid, LinesAreWhereTheEngineBeginsAPixel) {
    runCases(300, [](Random& random) {
        const int size = random.between(1, 40);
        const double beside = random.oneOf({0.0, 9e-11, -9e-11, 2e-10, -2e-10, 1.0 / 3, 0.5});
        const double scale = random.oneIn(3) ? random.real(16, 70) : random.between(17, 64) + beside;
        const long begin = random.between(-1000, 1000), first = random.between(-1100, 3000);
        const long last = first + random.between(0, 2000);
        const PixelAxis axis(begin, size, scale);
        const auto covered = talx::model::place(begin, 0, size, 1, scale);
        ASSERT_EQ(axis.end(), covered.right) << size << " at " << scale;
        std::vector<long> wanted;
        std::int64_t before = -1;
        for (long x = begin; x < covered.right; ++x) {
            const auto pixel =
                talx::model::sourceOf(size, 1, scale, {}, talx::model::nearestMethod, x - begin, 0)->x;
            ASSERT_EQ(axis.pixelAt(x), pixel) << x - begin << " at " << scale;
            if (pixel != before) {
                ASSERT_EQ(axis.beginOf(static_cast<long>(pixel)), x) << pixel << " at " << scale;
                wanted.insert(wanted.end(), x >= first && x < last, x);
            }
            before = pixel;
        }
        ASSERT_EQ(axis.lines(first, last), wanted) << size << " at " << scale;
        const PixelAxis centre(begin, size, scale, true);
        const std::int64_t start = std::max(-begin, 0L), end = covered.right - begin;
        before = -1;
        for (auto x = static_cast<long>(begin + start); size > 2 && end - start > 2 && x < covered.right;
             ++x) {
            const auto pixel = talx::model::sourceOf(size, size, scale, {start, start, end, end},
                                                     talx::model::centreMethod, x - begin, 0)
                                   ->x;
            ASSERT_EQ(centre.pixelAt(x), pixel) << x - begin << " at " << scale;
            if (pixel != before && x > 0 && x > begin) {
                ASSERT_EQ(centre.beginOf(static_cast<long>(pixel)), x) << pixel << " at " << scale;
            }
            before = pixel;
        }
    });
}

using Values = std::vector<double>;

TEST(Profile, HasOneSampleForEachPixelInsideThePicture) {
    Picture picture;
    picture.kind = PictureKind::range16;
    picture.depth = 16;
    picture.width = picture.height = 10;
    picture.words = Block<std::uint16_t>(100);
    for (std::size_t i = 0; i < 100; ++i) {
        picture.words[i] = static_cast<std::uint16_t>(i);
    }
    const auto curve = [&](Point from, Point to) {
        const Profile profile = profileAlong(picture, {from, to});
        return profile.size() == 0 ? Values() : profile.curves.at(0);
    };
    EXPECT_EQ(curve({4, 2}, {1, 2}), (Values{24, 23, 22, 21}));
    EXPECT_EQ(curve({0, 0}, {1, 3}), (Values{0, 10, 21, 31}));
    EXPECT_EQ(curve({-1e300, 0}, {1e300, 1}), (Values{}));
    EXPECT_EQ(curve({-5e8, 9}, {4e8, 9}), (Values{90, 91, 92, 93, 94, 95, 96, 97, 98, 99}));
    picture.scale = {0.5, 1, L"mm"};
    picture.mask = Block<std::uint8_t>(100);
    std::fill_n(picture.mask.data(), 100, std::uint8_t{1});
    picture.mask[11] = 0;
    const Profile part = profileAlong(picture, {{-3, -3}, {2.4, 2.4}});
    EXPECT_TRUE(std::isnan(part.curves.at(0)[1]));
    EXPECT_EQ(part.extremes(), (Limits{1, 12}));
    EXPECT_DOUBLE_EQ(part.start, 3 * std::hypot(5.4, 5.4) / 5);
}

TEST(Profile, ColumnsJoinAndShowEverySample) {
    const auto ranges = columnRanges({0, 40, std::nan(""), 8}, 7); // two for each step
    EXPECT_EQ((Limits{ranges[1].low, ranges[1].high}), (Limits{10, 30}));
    EXPECT_EQ((Limits{ranges[2].low, ranges[2].high}), (Limits{30, 40}));
    EXPECT_TRUE(std::isnan(ranges[3].low) && std::isnan(ranges[5].high));
    EXPECT_EQ((Limits{ranges[6].low, ranges[6].high}), (Limits{8, 8}));
    EXPECT_EQ(columnRanges({0, 9, 2, 8}, 2)[0].high, 9);
    EXPECT_EQ(columnRanges({7}, 2)[1].high, 7);
}

TEST(Ticks, AreRoundAndAsFineAsAsked) {
    EXPECT_EQ(ticksBetween(0, 1, 11).at.at(3), 0.3);
    EXPECT_EQ(ticksBetween(-7, 255, 6).at, (Values{0, 50, 100, 150, 200, 250}));
    EXPECT_EQ(tickText(-2, 0.2) + tickText(65500, 500) + tickText(1.5e10, 5e9), L"-2.0655001.5e+10");
    runCases(1000, [](Random& random) {
        const double low = random.real(-1, 1) * std::pow(10, random.between(-9, 12));
        const double high = low + random.real(0.1, 1) * std::pow(10, random.between(-9, 12));
        const int most = random.between(2, 12);
        const Ticks ticks = ticksBetween(low, high, most);
        ASSERT_LE(ticks.at.size(), static_cast<std::size_t>(most));
        ASSERT_TRUE(ticks.at.size() * 2.5 + 2.5 >= most - 1 || low + (high - low) * 1e-12 == low);
        for (const double at : ticks.at) {
            ASSERT_TRUE(at >= low - ticks.step * 1e-8 && at <= high + ticks.step * 1e-8) << at;
            ASSERT_NEAR(std::stod(tickText(at, ticks.step)), at, ticks.step * 1e-3);
        }
    });
}

TEST(LineRuns, ArePartsOfOneLineWhateverTheClip) {
    runCases(200, [](Random& random) {
        const Point from{random.real(-60, 60), random.real(-60, 60)};
        const Point to{random.real(-60, 60), random.real(-60, 60)};
        const long thickness = random.between(1, 4);
        const Point d{to.x - from.x, to.y - from.y};
        double pixels = 0;
        for (const Box& run : lineRuns(from, to, thickness, {-99, -99, 99, 99})) {
            const long x = random.between(run.left, run.right - 1),
                       y = random.between(run.top, run.bottom - 1);
            const double area = d.x * (y + 0.5 - from.y) - d.y * (x + 0.5 - from.x);
            ASSERT_LE(std::abs(area), std::hypot(d.x, d.y) * (thickness / 2.0 + 1)) << x << " " << y;
            const Box pixel{x, y, x + 1, y + 1};
            ASSERT_EQ(lineRuns(from, to, thickness, pixel), std::vector{pixel}) << x << " " << y;
            pixels += run.width() * run.height();
        }
        ASSERT_NEAR(pixels, std::max(std::abs(d.x), std::abs(d.y)) * thickness, 2.0 * thickness);
    });
}

} // namespace
} // namespace talview
