// Colour maps: whatever was done to a map, every table agrees with its colours, palette indices and size.
#include "render/pixels/color_maps.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

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

template <class Map>
void replaceEntries(Random& random, Map& map, int count) {
    map.beginReplace();
    for (int i = 0; i < count; ++i) {
        map.append(fromRgbWord(random.word()));
    }
    map.endReplace();
}

// Compares what a map's tables hold with what each value shows by the model: some of the tables only, so that
// tables of several ages come together.
template <PixelFormat... Formats, class Map, class Expected>
void checkTables(Random& random, Map& map, std::uint32_t count, const Expected& expected) {
    const auto check = [&]<PixelFormat Format>() {
        const TableEntry<Format>* const table = map.template table<Format>();
        for (std::uint32_t v = 0; v < count; ++v) {
            std::uint32_t shown = 0;
            std::memcpy(&shown, &table[v], sizeof table[v]);
            ASSERT_EQ(expected(static_cast<int>(Format), v), shown)
                << "format " << static_cast<int>(Format) << ", value " << v << " of " << count;
        }
    };
    ((random.oneIn(8) ? check.template operator()<Formats>() : void()), ...);
}

} // namespace

void checkColorMaps(Random& random) {
    GreyColorMap8 grey8;
    ColorMap16 grey16;
    model::ColorState colors;
    bool hasPalette = false;
    std::uint32_t palette = 0;
    const auto nearest = [&](std::uint32_t c) {
        return static_cast<std::uint8_t>((c ^ palette) * 2654435761u >> 24);
    };
    const auto check = [&] {
        colors.grey8 = toModel(grey8.entries());
        checkTables<Pal8, Rgb15, Rgb16, Rgb24, Rgb32>(random, grey8, 256, [&](int format, auto v) {
            return model::greyPixel8(format, colors, static_cast<std::uint8_t>(v));
        });
        colors.grey16 = toModel(grey16.entries());
        const std::uint32_t size = grey16.tableSize();
        checkTables<Rgb15, Rgb16, Rgb24, Rgb32>(random, grey16, size, [&](int format, auto v) {
            return model::greyPixel16(format, colors.grey16, size, static_cast<std::uint16_t>(v));
        });
    };
    for (int step = 0; step < 16; ++step) {
        const auto k = static_cast<std::uint8_t>(random.word());
        const ColorEntry color = fromRgbWord(random.word());
        const int count = random.oneOf({0, 1, 100, 255, 256, 257, 700, 5000});
        const int action = random.between(0, 8);
        palette = random.word();
        action == 0   ? grey8.setEntry(k, color, nearest)
        : action == 1 ? grey8.updatePalette(nearest)
        : action == 2 ? grey8.clear()
        : action == 3 ? replaceEntries(random, grey8, count)
        : action == 4 ? replaceEntries(random, grey16, count)
        : action == 5 ? grey16.clear()
        : action == 6 ? grey16.unset()
                      : grey16.setSize(tableSizeOfDepthCode(k % 6));
        hasPalette |= action == 1;
        for (int i = 0; i < 256; ++i) {
            if (action == 1 || (action == 0 && i == k && hasPalette)) {
                colors.paletteIndex[i] = nearest(toColorRef(grey8.entry(static_cast<std::uint8_t>(i))));
            }
        }
        check();
    }
}

TEST(ColorMaps, TablesAlwaysAgreeWithTheMap) {
    runCases(400, checkColorMaps);
}

} // namespace talx::test
