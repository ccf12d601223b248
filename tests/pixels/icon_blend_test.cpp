// Blending icons: random icons with every transparency over every buffer format, between fences.
#include "render/pixels/icon_blend.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

const FencedMemory bufferMemory(1 << 16), iconMemory(1 << 16);

TEST(IconBlend, GivesWhatTheModelGives) {
    forEachCase(6000, [](Random& random) {
        const int format = random.oneOf({0, 8, 15, 16, 24, 32});
        const Extent extent = randomExtent(random);
        const Rows icon(random, iconMemory, extent.width, extent.height, 1);
        Rows buffer(random, bufferMemory, extent.width, extent.height, std::max(1, (format + 1) / 8));
        std::array<model::Color, 256> colors;
        std::array<std::uint8_t, 256> transparencies;
        IconTables tables;
        IconIndexTables indices;
        random.fill(colors.data(), sizeof colors);
        random.fill(indices.index.data(), sizeof indices.index);
        for (int i = 0; i < 256; ++i) {
            transparencies[i] = static_cast<std::uint8_t>(
                random.oneOf({0, 50, 100, 101, 255, random.between(1, 99), random.between(1, 99)}));
            indices.transparent[i] = transparencies[i] == 100;
            tables.weight[i] = iconWeight(transparencies[i]);
            tables.color[i] = tables.weight[i] == invisibleWeight ? 0 : model::pack(format, colors[i]);
        }

        buffer.expect([&](int x, int y) -> std::uint32_t {
            const std::uint32_t i = icon.value(x, y), before = buffer.value(x, y);
            if (format > 8) {
                return model::blend(format, before, colors[i], model::iconWeight(transparencies[i]));
            }
            return format == 0 || indices.transparent[i] ? before : indices.index[i];
        });
        blendIcon(static_cast<PixelFormat>(format), buffer, icon, extent, tables); // nothing in 0 and 8
        if (format == 8) {
            drawIconIndices(buffer, icon, extent, indices);
        }
        ASSERT_EQ(std::nullopt, buffer.wrongByte()) << "format " << format;
    });
}

} // namespace
} // namespace talx::test
