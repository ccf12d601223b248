// The row converters: every source into every format, every remainder of the unrolled loops, between fences.
#include "render/pixels/row_converters.h"

#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

const FencedMemory destinationMemory(1 << 16), tableMemory(1 << 18);
const FencedMemory sourceMemory[3] = {FencedMemory(1 << 16), FencedMemory(1 << 16), FencedMemory(1 << 16)};

// Widths 0 to 9 and larger ones, each with some heights, in many layouts.
template <class Run>
void forEachExtent(const Run& run) {
    unsigned number = 0;
    for (const int width : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 31, 1001}) {
        for (const int height : {-2, 0, 1, 2, 5}) {
            for (int layout = 0; layout < 20; ++layout) {
                Random random(++number);
                ASSERT_NO_FATAL_FAILURE(run(random, Extent{width, height})) << "case " << number;
            }
        }
    }
}

// A table that ends at a fence: an index behind its end is found.
template <class Entry>
const Entry* randomTable(Random& random, std::size_t count) {
    std::uint8_t* const bytes = tableMemory.endingAtFence(count * sizeof(Entry));
    random.fill(bytes, count * sizeof(Entry));
    return reinterpret_cast<const Entry*>(bytes);
}

template <class Entry>
class TableConverters : public testing::Test {};
using AllEntries = testing::Types<std::uint8_t, std::uint16_t, ColorEntry, std::uint32_t>;
TYPED_TEST_SUITE(TableConverters, AllEntries);

TYPED_TEST(TableConverters, LookEveryPixelUp) {
    using Entry = TypeParam;
    forEachExtent([](Random& random, Extent extent) {
        const auto [width, height] = extent;
        const Rows destination(random, destinationMemory, width, height, sizeof(Entry));
        ExpectedRows expected(destination);
        const Rows grey(random, sourceMemory[0], width, height, 1);
        const Entry* table = randomTable<Entry>(random, 256);
        destination.forEachPixel(
            [&](int x, int y) { expected.set(x, y, toNumber(table[grey.value(x, y)])); });
        convertGrey8(destination, grey, extent, table);
        ASSERT_TRUE(expected.areThere()) << "8-bit grey";

        if constexpr (sizeof(Entry) > 1) {
            const std::uint32_t maxValue = random.oneOf({255, 255, 1023, 1023, 4095, 16383, 65535});
            const Rows values(random, sourceMemory[1], width, height, 2);
            table = randomTable<Entry>(random, maxValue + 1);
            const auto seen = [&](int x, int y) {
                return table[values.value(x, y) & maxValue];
            };
            destination.forEachPixel([&](int x, int y) { expected.set(x, y, toNumber(seen(x, y))); });
            convertGrey16(destination, values, extent, table, maxValue);
            ASSERT_TRUE(expected.areThere()) << "16-bit grey";

            const Rows mask(random, sourceMemory[2], width, height, 1);
            Entry hidden;
            random.fill(&hidden, sizeof hidden);
            destination.forEachPixel([&](int x, int y) {
                expected.set(x, y, toNumber(mask.value(x, y) == 0 ? hidden : seen(x, y)));
            });
            convertMaskedRange16(destination, values, mask, extent, table, maxValue, hidden);
            ASSERT_TRUE(expected.areThere()) << "16-bit range";
        }
    });
}

TEST(ColorConverter, PacksThePlanesInEveryFormatButThePalettised) {
    for (const int code : {0, 8, 15, 16, 24, 32}) {
        forEachExtent([code](Random& random, Extent extent) {
            const auto plane = [&](int i) {
                return Rows(random, sourceMemory[i], extent.width, extent.height, 1);
            };
            const Rows red = plane(0), green = plane(1), blue = plane(2);
            const int bytes = std::max(1, (code + 1) / 8);
            const Rows destination(random, destinationMemory, extent.width, extent.height, bytes);
            ExpectedRows expected(destination);
            destination.forEachPixel([&](int x, int y) {
                if (bytes > 1) {
                    expected.set(x, y, model::pack(code, {*red.at(x, y), *green.at(x, y), *blue.at(x, y)}));
                }
            });
            convertColor(static_cast<LayerFormat>(code), destination, red, green, blue, extent);
            ASSERT_TRUE(expected.areThere()) << "format " << code;
        });
    }
}

TEST(MaskColor, FollowsItsOwnArithmetic) {
    // Small bytes: in 16 bits the middle byte lands one bit higher than green does elsewhere.
    EXPECT_EQ(0x10 << 7 | 0x20 << 2 | 0x30 >> 3, maskPixel15(0x00102030));
    EXPECT_EQ(0x10 << 8 | 0x20 << 4 | 0x30 >> 3, maskPixel16(0x00102030));
    // White is three times -1: (-8 * 32 - 8) * 4 - 1 and (-8 * 16 - 4) * 16 - 1.
    EXPECT_EQ(0xFBDF, maskPixel15(0x00FFFFFF));
    EXPECT_EQ(0xF7BF, maskPixel16(0x00FFFFFF));
    for (std::uint32_t word = 0; word < 1u << 24; word += 7) {
        const std::uint32_t given = word | word << 24;
        ASSERT_EQ(model::maskPixel(15, word), maskPixel15(given)) << word;
        ASSERT_EQ(model::maskPixel(16, word), maskPixel16(given)) << word;
        ASSERT_EQ(model::maskPixel(24, word), toNumber(maskPixel24(given))) << word;
    }
}

} // namespace
} // namespace talx::test
