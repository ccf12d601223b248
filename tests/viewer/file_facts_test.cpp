// What the structure of files says.
#include "viewer/files/file_facts.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace talview {
namespace {

using Bytes = std::basic_string<std::uint8_t>;

FileFacts examined(const Bytes& file, std::size_t size, unsigned frame = 0) {
    const auto read = [&](std::uint64_t from, void* to, std::size_t count) {
        return from < size ? file.copy(static_cast<std::uint8_t*>(to), std::min(count, size - from), from)
                           : 0;
    };
    return examine({size, read}, frame);
}

Bytes number(std::uint32_t value, int bytes, bool isLittle = true) {
    Bytes number;
    for (int i = 0; i < bytes; ++i) {
        number += static_cast<std::uint8_t>(value >> 8 * (isLittle ? i : bytes - 1 - i));
    }
    return number;
}

// A file is whole with something behind it, too, but not one byte shorter.
void checkCuts(const Bytes& file, std::size_t least, FileKind kind) {
    for (std::size_t size = least; size < file.size() + 2; ++size) {
        const FileFacts facts = examined(file + Bytes{0xFF, 1}, size);
        EXPECT_EQ(facts.kind, kind);
        EXPECT_EQ(facts.endsEarly, size < file.size()) << size;
        EXPECT_EQ(facts.note().empty(), size >= file.size());
    }
}

TEST(FileFacts, CutsOfChunksAndSegments) {
    const Bytes png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0, 0, 0, 3,
                       'I',  'D', 'A', 'T', 1,    2,    3,    9,    9, 9, 9, 0,
                       0,    0,   0,   'I', 'E',  'N',  'D',  9,    9, 9, 9};
    checkCuts(png, 8, FileKind::png);
    // A small picture within a segment, data that looks like a marker, restarts, and a second scan.
    const Bytes jpeg = {0xFF, 0xD8, 0xFF, 0xE1, 0,    6, 0xFF, 0xD8, 0xFF, 0xD9, 0xFF, 0xDA, 0,    3,   1, 7,
                        0xFF, 0,    0xD9, 0xFF, 0xD3, 5, 0xFF, 0xFF, 0xDA, 0,    2,    6,    0xFF, 0xD9};
    checkCuts(jpeg, 2, FileKind::jpeg);
}

TEST(FileFacts, RowsThatABitmapLacks) {
    for (const int height : {3, -3}) {
        Bytes bmp = Bytes{'B', 'M'} + Bytes(8, 0) + number(54, 4) + number(40, 4) + number(5, 4) +
                    number(height, 4) + number(1, 2) + number(24, 2);
        bmp.resize(54 + 3 * 16); // bytes of a row
        checkCuts(bmp, 2, FileKind::bmp);
        EXPECT_EQ(examined(bmp, 54 + 17).missing, height > 0 ? (RowRange{0, 1}) : (RowRange{1, 2}));
    }
}

// Two frames of 7 rows in strips of 2; the strips of the second come first.
TEST(FileFacts, StripsOfTheFrameThatIsAskedFor) {
    Bytes tiff = {'M', 'M', 0, 42};
    const auto add = [&](std::initializer_list<std::uint32_t> longs) {
        for (const std::uint32_t each : longs) {
            tiff += number(each, 4, false);
        }
    };
    add({8});
    for (const bool isFirst : {true, false}) {
        const std::uint32_t lists = isFirst ? 74 : 164;
        const std::uint32_t strip = isFirst ? 228 : 188;
        tiff += number(5, 2, false);
        add({257 << 16 | 4, 1, 7, 273 << 16 | 4, 4, lists, 278 << 16 | 4, 1, 2, 279 << 16 | 3, 4,
             lists + 16});
        add({339 << 16 | 4, 1, isFirst ? 3u : 2u, isFirst ? 98u : 0});
        add({strip, strip + 10, strip + 20, strip + 30, 0x000A000A, 0x000A000A});
    }
    tiff.resize(268);
    checkCuts(tiff, 4, FileKind::tiff);
    EXPECT_EQ(examined(tiff, 268).numbers, FileFacts::Numbers::real);
    EXPECT_EQ(examined(tiff, 253).missing, (RowRange{4, 6}));
    EXPECT_EQ(examined(tiff, 253, 1).numbers, FileFacts::Numbers::signedWhole);
    EXPECT_FALSE(examined(tiff, 253, 1).endsEarly);
}

} // namespace
} // namespace talview
