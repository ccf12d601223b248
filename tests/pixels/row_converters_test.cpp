// The row converters: every source into every format, every remainder of the unrolled loops, between fences.
#include "render/pixels/row_converters.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

const FencedMemory bufferMemory(1 << 16), redMemory(1 << 16), greenMemory(1 << 16), blueMemory(1 << 16),
    valueMemory(1 << 16), tableMemory(1 << 18);

// A random case of every converter into a format, whose tables have such entries.
template <class Entry>
void convertInto(int format, Random& random) {
    const Extent extent = randomExtent(random);
    const auto rows = [&](const FencedMemory& memory, int bytes) {
        return Rows(random, memory, extent.width, extent.height, bytes);
    };
    Rows buffer = rows(bufferMemory, sizeof(Entry));
    const Rows red = rows(redMemory, 1), green = rows(greenMemory, 1), blue = rows(blueMemory, 1);
    const int maxValue = random.oneOf({255, 1023, 1023, 4095, 4095, 16383, 65535});
    const Rows table(random, tableMemory, maxValue + 1, 1, sizeof(Entry));
    const auto* const entries = reinterpret_cast<const Entry*>(table.data);

    buffer.expect([&](int x, int y) {
        const model::Color color{*red.at(x, y), *green.at(x, y), *blue.at(x, y)};
        return format > 8 ? model::pack(format, color) : buffer.value(x, y);
    });
    convertColor(static_cast<PixelFormat>(format), buffer, red, green, blue, extent);
    ASSERT_EQ(std::nullopt, buffer.wrongByte()) << "color, format " << format;

    buffer.expect([&](int x, int y) { return table.value(red.value(x, y), 0); });
    convertGrey8(buffer, red, extent, entries);
    ASSERT_EQ(std::nullopt, buffer.wrongByte()) << "8-bit grey, format " << format;

    if constexpr (sizeof(Entry) > 1) {
        const Rows values = rows(valueMemory, 2);
        const auto seen = [&](int x, int y) {
            return table.value(values.value(x, y) & maxValue, 0);
        };
        buffer.expect(seen);
        convertGrey16(buffer, values, extent, entries, maxValue);
        ASSERT_EQ(std::nullopt, buffer.wrongByte()) << "16-bit grey, format " << format;

        const int hidden = random.between(0, 255);
        buffer.expect([&](int x, int y) { return *red.at(x, y) == 0 ? table.value(hidden, 0) : seen(x, y); });
        convertMaskedRange16(buffer, values, red, extent, entries, maxValue, entries[hidden]);
        ASSERT_EQ(std::nullopt, buffer.wrongByte()) << "16-bit range, format " << format;
    }
}

TEST(RowConverters, GiveWhatTheTablesAndTheModelSay) {
    forEachCase(250, [](Random& random) {
        convertInto<std::uint8_t>(random.oneOf({0, 8}), random);
        convertInto<std::uint16_t>(random.oneOf({15, 16}), random);
        convertInto<ColorEntry>(24, random);
        convertInto<std::uint32_t>(32, random);
    });
}

TEST(MaskColor, FollowsItsOwnArithmetic) {
    for (std::uint32_t word = 0; word < 1u << 24; word += 7) {
        const std::uint32_t given = word | word << 24;
        ASSERT_EQ(model::maskPixel(15, word), maskPixel15(given)) << word;
        ASSERT_EQ(model::maskPixel(16, word), maskPixel16(given)) << word;
        ASSERT_EQ(model::maskPixel(24, word), toRgb32(maskPixel24(given))) << word;
    }
}

} // namespace
} // namespace talx::test
