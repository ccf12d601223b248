// Colour maps: whatever was done to a map, and wherever memory ran out on the way, every table agrees with
// the map's colours, palette indices and size.
#include "render/pixels/color_maps.h"

#include "tests/model/model.h"
#include "tests/pixels/failing_new.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

using Entries = std::vector<ColorEntry>;

Entries randomEntries(Random& random, int count) {
    Entries entries(count);
    random.fill(entries.data(), entries.size() * sizeof(ColorEntry));
    return entries;
}

std::vector<model::Color> toModel(const Entries& entries) {
    std::vector<model::Color> colors;
    for (const ColorEntry e : entries) {
        colors.push_back({e.red, e.green, e.blue});
    }
    return colors;
}

// Replaces a map's entries; afterFailure is told which entries are there when memory ran out.
template <class Map, class Check>
void replaceEntries(Map& map, const Entries& entries, const Check& afterFailure) {
    Entries appended;
    appended.reserve(entries.size());
    withEveryAllocationFailing(
        [&] {
            appended.clear();
            map.beginReplace();
            for (const ColorEntry e : entries) {
                map.append(e);
                appended.push_back(e);
            }
            map.endReplace();
        },
        [&] { afterFailure(appended); });
}

// Compares a map's table for a format with what a value shows there by the model.
template <LayerFormat Format, class Map, class Expected>
void checkTableOf(Map& map, std::uint32_t count, const Expected& expected) {
    const typename TableEntry<Format>::type* table = nullptr;
    withEveryAllocationFailing([&] { table = map.template table<Format>(); }, [] {});
    for (std::uint32_t v = 0; v < count; ++v) {
        ASSERT_EQ(expected(static_cast<int>(Format), v), toNumber(table[v]))
            << "format " << static_cast<int>(Format) << ", value " << v << " of " << count;
    }
}
template <class Map, class Expected>
void checkSomeTable(Random& random, Map& map, std::uint32_t count, const Expected& expected) {
    switch (random.between(0, 3)) {
    case 0:
        return checkTableOf<LayerFormat::Rgb15>(map, count, expected);
    case 1:
        return checkTableOf<LayerFormat::Rgb16>(map, count, expected);
    case 2:
        return checkTableOf<LayerFormat::Rgb24>(map, count, expected);
    default:
        return checkTableOf<LayerFormat::Rgb32>(map, count, expected);
    }
}

void useGreyMap(unsigned number) {
    Random random(number);
    GreyColorMap8 map;
    Entries entries, ramp;
    for (int g = 0; g < 256; ++g) {
        ramp.push_back(greyEntry(g));
    }
    entries = ramp;
    bool isSet = false, hasPalette = false;
    model::ColorState colors;
    std::uint32_t palette = random.word();
    const NearestPaletteIndex nearest = [&](std::uint32_t colorRef) {
        return static_cast<std::uint8_t>(((colorRef ^ palette) * 2654435761u) >> 24);
    };
    const auto check = [&] {
        ASSERT_EQ(isSet, map.isSet());
        ASSERT_TRUE(entries == map.entries());
        const auto k = static_cast<std::uint8_t>(random.word());
        ASSERT_TRUE((k < entries.size() ? entries[k] : greyEntry(k)) == map.entry(k));
        colors.grey8 = toModel(entries);
        const auto expected = [&](int format, std::uint32_t v) {
            return model::greyPixel8(format, colors, static_cast<std::uint8_t>(v));
        };
        if (random.oneIn(2)) { // not always, so that tables of several ages come together
            checkSomeTable(random, map, 256, expected);
        }
        if (hasPalette && random.oneIn(2)) {
            checkTableOf<LayerFormat::Pal8>(map, 256, expected);
        }
    };
    for (int step = 0; step < 40; ++step) {
        const int action = random.between(0, 3);
        if (action == 0) {
            const auto k = static_cast<std::uint8_t>(random.word());
            const ColorEntry color = randomEntries(random, 1).front();
            withEveryAllocationFailing([&] { map.setEntry(k, color, hasPalette ? nearest : nullptr); },
                                       check);
            if (entries.size() < 256) {
                entries.insert(entries.end(), ramp.begin() + entries.size(), ramp.end());
            }
            entries[k] = color;
            isSet = true;
            colors.paletteIndex[k] = nearest(toColorRef(color));
        } else if (action == 1) {
            const int count = random.oneOf({0, 1, 100, 255, 256, 257, 700});
            const Entries next = randomEntries(random, count);
            replaceEntries(map, next, [&](const Entries& appended) {
                entries = appended;
                isSet = false;
                check();
            });
            entries = next;
            isSet = true;
        } else if (action == 2) {
            withEveryAllocationFailing([&] { map.clear(); },
                                       [&] {
                                           entries = map.entries(); // the old ones or the new ones
                                           isSet = map.isSet();
                                           check();
                                       });
            entries.resize(std::max<std::size_t>(entries.size(), 256)); // those beyond stay
            std::copy(ramp.begin(), ramp.end(), entries.begin());
            isSet = false;
        } else {
            palette = random.word();
            withEveryAllocationFailing([&] { map.updatePalette(nearest); }, check);
            hasPalette = true;
            for (int k = 0; k < 256; ++k) {
                colors.paletteIndex[k] = nearest(toColorRef(map.entry(static_cast<std::uint8_t>(k))));
            }
        }
        check();
        ASSERT_FALSE(testing::Test::HasFailure()) << "case " << number << ", step " << step;
    }
}

TEST(GreyColorMap8, TablesAlwaysAgreeWithTheMap) {
    for (unsigned number = 0; number < 150; ++number) {
        ASSERT_NO_FATAL_FAILURE(useGreyMap(number));
    }
}

void use16BitMap(unsigned number) {
    Random random(number);
    ColorMap16 map;
    Entries entries;
    std::uint32_t size = 0;
    const auto check = [&] {
        ASSERT_TRUE(entries == map.entries());
        ASSERT_EQ(size, map.tableSize());
        if (size > 0 && random.oneIn(2)) {
            const auto colors = toModel(entries);
            checkSomeTable(random, map, size, [&](int format, std::uint32_t v) {
                return model::greyPixel16(format, colors, size, static_cast<std::uint16_t>(v));
            });
        }
    };
    EXPECT_EQ(65535u, map.maxValue());
    for (int step = 0; step < 25; ++step) {
        const int action = random.between(0, 6);
        if (action == 0) {
            withEveryAllocationFailing([&] { map.clear(); },
                                       [&] {
                                           entries = map.entries(); // the old ones or none
                                           check();
                                       });
            entries.clear();
        } else if (action == 1) {
            map.unset();
            size = 0;
        } else if (action < 4) {
            const Entries next = randomEntries(random, random.oneOf({0, 1, 10, 255, 256, 1024, 5000, 66000}));
            replaceEntries(map, next, [&](const Entries& appended) {
                entries = appended;
                check();
            });
            entries = next;
        } else {
            const std::int32_t code = random.between(-1, 7);
            size = model::valueCount(code);
            ASSERT_EQ(size, tableSizeOfDepthCode(code));
            map.setSize(size);
            ASSERT_EQ(size - 1, map.maxValue());
        }
        check();
        ASSERT_FALSE(testing::Test::HasFailure()) << "case " << number << ", step " << step;
    }
}

TEST(ColorMap16, TablesAlwaysAgreeWithTheMap) {
    for (unsigned number = 0; number < 40; ++number) {
        ASSERT_NO_FATAL_FAILURE(use16BitMap(number));
    }
}

} // namespace
} // namespace talx::test
