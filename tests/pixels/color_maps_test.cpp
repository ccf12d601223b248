// Colour maps: whatever was done to a map, and wherever memory ran out on the way, every table agrees with
// the map's colours, palette indices and size.
#include "render/pixels/color_maps.h"

#include "tests/model/model.h"
#include "tests/pixels/failing_new.h"
#include "tests/pixels/random_rows.h"

#include <functional>

namespace talx::test {
namespace {

using enum PixelFormat;

std::vector<model::Color> toModel(const std::vector<ColorEntry>& entries) {
    std::vector<model::Color> colors;
    for (const ColorEntry e : entries) {
        colors.push_back({e.red, e.green, e.blue});
    }
    return colors;
}

// Replaces a map's entries by random ones. entries follows the map, also when memory runs out.
template <class Map, class Check>
void replaceEntries(Random& random, Map& map, std::vector<ColorEntry>& entries, const Check& check) {
    const std::size_t count = random.oneOf({0, 1, 100, 255, 256, 257, 700, 5000});
    entries.reserve(count);
    const auto replace = [&] {
        entries.clear();
        map.beginReplace();
        while (entries.size() < count) {
            const ColorEntry color = fromRgbWord(random.word());
            map.append(color);
            entries.push_back(color);
        }
        map.endReplace();
    };
    withEveryAllocationFailing(replace, check);
}

// Compares a map's table for a format with what its values show there by the model.
template <PixelFormat Format, class Map, class Expected>
void checkTable(Map& map, std::uint32_t count, const Expected& expected) {
    const TableEntry<Format>* table = nullptr;
    withEveryAllocationFailing([&] { table = map.template table<Format>(); });
    for (std::uint32_t v = 0; v < count; ++v) {
        std::uint32_t shown = 0;
        std::memcpy(&shown, &table[v], sizeof table[v]);
        ASSERT_EQ(expected(static_cast<int>(Format), v), shown)
            << "format " << static_cast<int>(Format) << ", value " << v << " of " << count;
    }
}
// Some of its tables only, so that tables of several ages come together.
template <PixelFormat... Formats, class Map, class Expected>
void checkSomeTables(Random& random, Map& map, std::uint32_t count, const Expected& expected) {
    ((random.oneIn(8) ? checkTable<Formats>(map, count, expected) : void()), ...);
}

TEST(GreyColorMap8, TablesAlwaysAgreeWithTheMap) {
    std::vector<ColorEntry> ramp;
    for (int g = 0; g < 256; ++g) {
        ramp.push_back(greyEntry(g));
    }
    forEachCase(200, [&](Random& random) {
        GreyColorMap8 map;
        std::vector<ColorEntry> entries = ramp;
        bool isSet = false;
        model::ColorState colors;
        std::function<std::uint8_t(std::uint32_t)> nearest; // none before there is a palette
        const auto check = [&] {
            ASSERT_EQ(isSet, map.isSet());
            ASSERT_TRUE(entries == map.entries());
            colors.grey8 = toModel(entries);
            const auto expected = [&](int format, std::uint32_t v) {
                return model::greyPixel8(format, colors, static_cast<std::uint8_t>(v));
            };
            checkSomeTables<Pal8, Rgb15, Rgb16, Rgb24, Rgb32>(random, map, 256, expected);
        };
        for (int step = 0; step < 40; ++step) {
            const auto k = static_cast<std::uint8_t>(random.word());
            const std::uint32_t word = random.word();
            switch (random.between(0, 3)) {
            case 0:
                withEveryAllocationFailing([&] { map.setEntry(k, fromRgbWord(word), nearest); }, check);
                if (entries.size() <= k) {
                    entries.insert(entries.end(), ramp.begin() + entries.size(), ramp.begin() + k + 1);
                }
                entries[k] = fromRgbWord(word);
                isSet = true;
                colors.paletteIndex[k] = nearest ? nearest(toColorRef(entries[k])) : 0;
                break;
            case 1:
                isSet = false;
                replaceEntries(random, map, entries, check);
                isSet = true;
                break;
            case 2:
                withEveryAllocationFailing([&] { map.clear(); }, check);
                entries.resize(std::max(entries.size(), ramp.size())); // those beyond stay
                std::copy(ramp.begin(), ramp.end(), entries.begin());
                isSet = false;
                break;
            default:
                nearest = [word](std::uint32_t c) {
                    return static_cast<std::uint8_t>((c ^ word) * 2654435761u >> 24);
                };
                withEveryAllocationFailing([&] { map.updatePalette(nearest); }, check);
                for (int i = 0; i < 256; ++i) {
                    colors.paletteIndex[i] = nearest(toColorRef(map.entry(static_cast<std::uint8_t>(i))));
                }
            }
            ASSERT_NO_FATAL_FAILURE(check()) << "step " << step;
        }
    });
}

TEST(ColorMap16, TablesAlwaysAgreeWithTheMap) {
    forEachCase(40, [](Random& random) {
        ColorMap16 map;
        std::vector<ColorEntry> entries;
        std::uint32_t size = 0;
        const auto check = [&] {
            ASSERT_EQ(size, map.tableSize());
            ASSERT_TRUE(entries == map.entries());
            const auto expected = [&, colors = toModel(entries)](int format, std::uint32_t v) {
                return model::greyPixel16(format, colors, size, static_cast<std::uint16_t>(v));
            };
            checkSomeTables<Rgb15, Rgb16, Rgb24, Rgb32>(random, map, size, expected);
        };
        for (int step = 0; step < 25; ++step) {
            const int action = random.between(0, 6);
            if (action == 0) {
                entries.clear();
                withEveryAllocationFailing([&] { map.clear(); }, check);
            } else if (action == 1) {
                size = 0;
                map.unset();
            } else if (action < 4) {
                replaceEntries(random, map, entries, check);
            } else {
                const std::int32_t depthCode = random.between(-1, 7);
                size = model::valueCount(depthCode);
                map.setSize(tableSizeOfDepthCode(depthCode));
                ASSERT_EQ(size - 1, map.maxValue());
            }
            ASSERT_NO_FATAL_FAILURE(check()) << "step " << step;
        }
    });
}

} // namespace
} // namespace talx::test
