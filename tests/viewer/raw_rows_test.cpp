// Raw pixels into pictures.
#include "viewer/files/raw_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace talview {
namespace {

// Rows of samples, and behind them rows that the file lacks.
template <class Raw>
Picture shown(const RawFormat& format, long width, const std::vector<Raw>& samples, long missing = 0) {
    const std::size_t stride = format.stride(width);
    const auto given = static_cast<long>(samples.size() * sizeof(Raw) / stride);
    const auto rows =
        rawRows(format, width, given + missing, 12, {0xFF070707, 0xFFC8C8C8, 0xFF112233, 0xFFFFFF});
    for (long y = 0; y < given; ++y) {
        std::memcpy(rows->place(y, 1), reinterpret_cast<const uint8_t*>(samples.data()) + y * stride, stride);
        rows->convert(y, 1);
    }
    return rows->finish(given);
}

using List = std::vector<double>;

// Planes, words, and what is kept beside them.
List all(const Picture& picture) {
    List values;
    const auto add = [&](const auto& block) {
        values.insert(values.end(), block.data(), block.data() + block.size());
    };
    std::for_each(picture.bytes.begin(), picture.bytes.end(), add);
    add(picture.words);
    add(picture.deep);
    add(picture.real);
    return values;
}

TEST(RawRows, FewBitsAndPalettes) {
    EXPECT_EQ(all(shown<uint8_t>({Colors::grey, 1, 1}, 9, {0x20, 0x80})),
              (List{0, 0, 255, 0, 0, 0, 0, 0, 255}));
    EXPECT_EQ(all(shown<uint8_t>({Colors::grey, 1, 2}, 4, {0x1B})), (List{0, 85, 170, 255}));
    const RawFormat indexed{Colors::palette, 1, 4};
    EXPECT_EQ(all(shown<uint8_t>(indexed, 3, {0x10, 0xF0}, 1)), (List{200, 7, 0, 0, 0, 0})); // there is no 15
    EXPECT_EQ(all(shown<uint8_t>(indexed, 2, {0x12})), (List{200, 0x11, 200, 0x22, 200, 0x33}));
}

TEST(RawRows, WordsAreShownInEightBitsAndKept) {
    const RawFormat bgr{Colors::bgr, 3, 16};
    const Picture grey = shown<uint16_t>(bgr, 2, {300, 300, 300, 4000, 4000, 4000}, 1);
    EXPECT_EQ(grey.depth, 12);
    EXPECT_EQ(all(grey), (List{300, 4000, 0, 0}));
    const Picture color = shown<uint16_t>(bgr, 2, {128, 128, 128, 129, 65406, 65407});
    EXPECT_EQ(all(color), (List{0, 255, 0, 254, 0, 1, 128, 128, 128, 65407, 65406, 129}));
    const Picture inks = shown<uint16_t>({Colors::cmyk, 4, 16}, 1, {65535, 0, 32768, 13107});
    EXPECT_EQ(all(inks), (List{0, 204, 102, 0, 52428, 26214})); // all cyan is no red; a fifth is black
    const Picture moved = shown<uint16_t>({Colors::grey, 1, 16, Sample::signedWhole}, 2, {0x8000, 0xFFFF});
    EXPECT_EQ(all(moved), (List{0, 32767}));
    EXPECT_EQ(valueText(moved, 1, 0), L"-1");
}

// What was grey, and then opaque, before is carried over when a pixel has a colour, or can be seen through.
TEST(RawRows, AlphaLiesOnSquares) {
    const RawFormat rgba{Colors::rgb, 4, 8, Sample::whole, Alpha::straight};
    const Picture mixed = shown<uint8_t>(rgba, 3, {9, 9, 9, 255, 10, 20, 30, 255, 100, 200, 250, 51});
    EXPECT_EQ(all(mixed),
              (List{9, 10, 183, 9,   20, 203, 9,  30,  213, // a fifth of the pixel, the rest of 204
                    9, 9,  9,   255, 10, 20,  30, 255, 100, 200, 250, 51}));
    EXPECT_EQ(kindText(mixed), L"colour with alpha");
    const RawFormat ready{Colors::bgr, 4, 16, Sample::whole, Alpha::premultiplied};
    EXPECT_EQ(all(shown<uint16_t>(ready, 1, {0, 0x3333, 0xFFFF, 0x3333})),
              (List{255, 214, 163, 0xFFFF, 0x3333, 0, 0x3333}));
    const Picture clear = shown(rgba, 17, std::vector<uint8_t>(4 * 17 * 9));
    for (const long at : {7 * 17 + 7, 16, 8 * 17 + 8, 8, 7 * 17 + 15, 8 * 17 + 7}) {
        EXPECT_EQ(clear.bytes[1][at], at % 17 / 8 % 2 == at / 17 / 8 ? lightSquare : darkSquare) << at;
    }
    EXPECT_EQ(all(shown<uint8_t>(rgba, 1, {1, 2, 3, 255}, 1)), (List{1, 0, 2, 0, 3, 0}));
}

TEST(RawRows, RealNumbers) {
    const RawFormat format{Colors::grey, 1, 32, Sample::real};
    const Picture picture = shown<float>(format, 6, {-2, NAN, INFINITY, 8, -INFINITY, 3}, 1);
    const Block<uint16_t>& words = picture.words;
    EXPECT_EQ(List(words.data(), words.data() + 7), (List{0, 0, 65535, 65535, 0, 32768, 0}));
    EXPECT_NEAR(picture.scale.of(32768), 3, 1e-3);
    EXPECT_EQ(valueText(picture, 5, 0), L"3");
    const Picture flat = shown<float>(format, 2, {5, 5});
    EXPECT_EQ(flat.scale.of(flat.words[1]), 5);
    const auto halves = shown<uint16_t>({Colors::grey, 1, 16, Sample::real}, 3, {0xC500, 1, 0x7BFF});
    EXPECT_EQ(all(halves), (List{0, 5, 65535, -5, std::ldexp(1, -24), 65504}));
    const RawFormat rgba{Colors::rgb, 4, 32, Sample::real, Alpha::straight};
    const Picture light = shown<float>(rgba, 2, {-1, 0.25f, 0.5f, 1, 0.001f, 1, 7, 1});
    EXPECT_EQ(all(light), (List{0, 3, 137, 255, 188, 255, -1, 0.25, 0.5, 0.001f, 1, 7}));
    EXPECT_EQ(shown<float>(rgba, 1, {1, 0, 0, 0.5f}).bytes[0][0], 230); // between 255 and the square
}

} // namespace
} // namespace talview
