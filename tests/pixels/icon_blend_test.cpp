// Blending icons: every weight over every layer and colour byte, and random icons between fences.
#include "render/pixels/icon_blend.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

const FencedMemory layerMemory(1 << 19), iconMemory(1 << 17);

using Colors = std::array<model::Color, 256>;
using Transparencies = std::array<std::uint8_t, 256>;

TEST(IconWeight, IsIn128thsAndHeldAt100) {
    EXPECT_EQ(38, iconWeight(30)); // 38.4
    EXPECT_EQ(64, iconWeight(50));
    EXPECT_EQ(127, iconWeight(99)); // 126.72
    for (int t = 0; t < 256; ++t) {
        EXPECT_EQ(model::iconWeight(static_cast<std::uint8_t>(t)), iconWeight(static_cast<std::uint8_t>(t)))
            << t;
    }
}

testing::AssertionResult blendsAsTheModel(int format, const Rows& layer, const Rows& icon,
                                          const Colors& colors, const Transparencies& transparencies) {
    IconTables tables;
    for (int i = 0; i < 256; ++i) {
        tables.weight[i] = iconWeight(transparencies[i]);
        tables.color[i] = tables.weight[i] == invisibleWeight ? 0 : model::pack(format, colors[i]);
    }
    ExpectedRows expected(layer);
    layer.forEachPixel([&](int x, int y) {
        const auto i = icon.value(x, y);
        expected.set(x, y, model::blend(format, layer.value(x, y), colors[i], tables.weight[i]));
    });
    blendIcon(static_cast<LayerFormat>(format), layer, icon, {icon.width, icon.height}, tables);
    return expected.areThere() << ", format " << format;
}

TEST(IconBlend, EveryWeightOverEveryLayerAndColorByte) {
    Random random(1);
    const Rows icon(random, iconMemory, 256, 64, 1);
    icon.forEachPixel([&](int x, int y) { *icon.at(x, y) = static_cast<std::uint8_t>(x); });
    Colors colors;
    for (int i = 0; i < 256; ++i) {
        const auto byte = static_cast<std::uint8_t>(i);
        colors[i] = {byte, static_cast<std::uint8_t>(~byte), static_cast<std::uint8_t>(77 * byte)};
    }
    for (const int format : {15, 16, 24, 32}) {
        for (int t = 0; t <= 101; ++t) {
            const Rows layer(random, layerMemory, 256, 64, (format + 1) / 8);
            layer.forEachPixel([&](int x, int y) { // with the bits that have no meaning, too
                const std::uint32_t level = 4 * y + t % 4;
                const std::uint32_t value = format > 16 ? level * 0x01010101u : level * 257u + x * 4099u;
                std::memcpy(layer.at(x, y), &value, layer.pixelBytes);
            });
            Transparencies all;
            all.fill(static_cast<std::uint8_t>(t == 101 ? 255 : t));
            ASSERT_TRUE(blendsAsTheModel(format, layer, icon, colors, all)) << "transparency " << t;
        }
    }
}

TEST(IconBlend, RandomIcons) {
    for (unsigned number = 0; number < 3000; ++number) {
        Random random(number);
        const int format = random.oneOf({15, 16, 24, 32});
        const Extent extent{random.oneIn(2) ? random.between(-1, 9) : random.between(1, 60),
                            random.between(-1, 9)};
        const Rows icon(random, iconMemory, extent.width, extent.height, 1);
        const Rows layer(random, layerMemory, extent.width, extent.height, (format + 1) / 8);
        Colors colors;
        Transparencies transparencies;
        random.fill(colors.data(), sizeof colors);
        for (auto& t : transparencies) {
            t = static_cast<std::uint8_t>(random.oneOf({0, 100, 50, 1, 99, random.between(0, 255)}));
        }
        ASSERT_TRUE(blendsAsTheModel(format, layer, icon, colors, transparencies)) << "case " << number;

        const Rows palettised(random, layerMemory, extent.width, extent.height, 1);
        IconIndexTables tables;
        random.fill(tables.index.data(), tables.index.size());
        for (auto& transparent : tables.transparent) {
            transparent = random.oneIn(3);
        }
        ExpectedRows expected(palettised);
        palettised.forEachPixel([&](int x, int y) {
            if (const auto i = icon.value(x, y); !tables.transparent[i]) {
                expected.set(x, y, tables.index[i]);
            }
        });
        drawIconIndices(palettised, icon, extent, tables);
        blendIcon(random.oneOf({LayerFormat::Pal8, LayerFormat::Unspecified}), palettised, icon, extent, {});
        ASSERT_TRUE(expected.areThere()) << "case " << number << ", palettised";
    }
}

} // namespace
} // namespace talx::test
