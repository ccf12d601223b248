// What writes rows of a buffer, converters and icon blending, in every version: rows of every length in every
// format, between fences.
#include "render/pixels/row_converters.h"

#include "render/pixels/color_maps.h"
#include "render/pixels/icon_blend.h"
#include "tests/model/model.h"
#include "tests/pixels/random_rows.h"

namespace talx::test {
namespace {

const FencedMemory bufferMemory(1 << 16), redMemory(1 << 16), greenMemory(1 << 16), blueMemory(1 << 16),
    valueMemory(1 << 16), tableMemory(1 << 18);

template <class Entry>
LevelLoop<Entry> levelLoop() {
    const Versions& versions = activeVersions();
    if constexpr (sizeof(Entry) == 2) {
        return versions.levelsTo16;
    } else if constexpr (sizeof(Entry) == 3) {
        return versions.levelsTo24;
    } else {
        return versions.levelsTo32;
    }
}

// Every converter into a format whose tables have such entries.
template <class Entry>
void convertInto(PixelFormat format, Extent extent, Random& random) {
    const auto rows = [&](const FencedMemory& memory, int bytes) {
        return Rows(random, memory, extent.width, extent.height, bytes);
    };
    Rows buffer = rows(bufferMemory, sizeof(Entry));
    const Rows red = rows(redMemory, 1), green = rows(greenMemory, 1), blue = rows(blueMemory, 1);
    const Rows values = rows(valueMemory, 2);
    const int maxValue = random.oneOf({255, 255, 1023, 1023, 1023, 4095, 4095, 16383, 65535});
    const Rows table(random, tableMemory, maxValue + 1, 1, sizeof(Entry));
    const auto* const entries = reinterpret_cast<const Entry*>(table.data);
    // Some tables are of runs, some of those a grey ramp, for which there are faster ways.
    const int run = (maxValue + 1) / 256, kind = random.between(0, 2);
    for (int v = 0; v <= maxValue && kind > 0; ++v) {
        const std::uint32_t level = v / run, ramp = toPixel(format, greyEntry(level));
        std::memcpy(table.at(v, 0), kind == 1 ? table.at(v / run * run, 0) : static_cast<const void*>(&ramp),
                    sizeof(Entry));
    }
    const int other = random.oneOf({maxValue, random.between(0, maxValue)}); // which may break the ramp
    random.oneIn(3) ? random.fill(table.at(other, 0), sizeof(Entry)) : void();
    const auto packed = [&](int x, int y) {
        const model::Color color{*red.at(x, y), *green.at(x, y), *blue.at(x, y)};
        return sizeof(Entry) > 1 ? model::pack(static_cast<int>(format), color) : buffer.value(x, y);
    };
    buffer.check(random, packed, [&] { convertColor(format, buffer, red, green, blue, extent); });
    const auto grey = [&](int x, int y) {
        return table.value(*red.at(x, y), 0);
    };
    buffer.check(random, grey, [&] { convertGrey8(buffer, red, extent, entries); });
    if constexpr (sizeof(Entry) > 1) {
        const auto wide = [&](int x, int y) {
            return table.value(values.value(x, y) & maxValue, 0);
        };
        buffer.check(random, wide, [&] { convertGrey16(buffer, values, extent, entries, maxValue); });
        const int hidden = random.between(0, 255);
        buffer.check(
            random, [&](int x, int y) { return *red.at(x, y) ? wide(x, y) : table.value(hidden, 0); },
            [&] { convertMaskedRange16(buffer, values, red, extent, entries, maxValue, entries[hidden]); });
        const int shift = random.between(0, 8);
        const LevelTable<Entry> masked{entries, (256u << shift) - 1, shift};
        const HiddenPixels<Entry> replaced{red, entries[hidden]};
        const bool all = random.oneIn(2);
        const auto level = [&](int x, int y) {
            return all || *red.at(x, y) ? table.value((values.value(x, y) & masked.mask) >> masked.shift, 0)
                                        : table.value(hidden, 0);
        };
        if (!extent.empty()) {
            buffer.check(random, level, [&] {
                levelLoop<Entry>()(buffer, values, extent, masked, all ? nullptr : &replaced);
            });
        }
    }
}

void blendInto(int format, Extent extent, Random& random) {
    const Rows icon(random, redMemory, extent.width, extent.height, 1);
    Rows buffer(random, bufferMemory, extent.width, extent.height, std::max(1, (format + 1) / 8));
    std::array<model::Color, 256> colors;
    IconTables tables;
    IconIndexTables indices;
    random.fill(colors.data(), sizeof colors);
    random.fill(indices.index.data(), sizeof indices.index);
    const bool opaque = random.oneIn(4);
    const auto transparencyOf = [opaque](std::uint32_t i) {
        return static_cast<std::uint8_t>(opaque ? 0 : i % 2 ? i : i % 102);
    };
    for (int i = 0; i < 256; ++i) {
        indices.transparent[i] = transparencyOf(i) == 100;
        tables.weight[i] = iconWeight(transparencyOf(i));
        tables.color[i] = tables.weight[i] == invisibleWeight ? 0 : model::pack(format, colors[i]);
    }
    const auto blended = [&](int x, int y) -> std::uint32_t {
        const std::uint32_t i = *icon.at(x, y), before = buffer.value(x, y);
        if (format > 8) {
            return model::blend(format, before, colors[i], model::iconWeight(transparencyOf(i)));
        }
        return format == 0 || indices.transparent[i] ? before : indices.index[i];
    };
    buffer.check(random, blended, [&] {
        blendIcon(PixelFormat{format}, buffer, icon, extent, tables); // nothing in 0 and 8
        if (format == 8) {
            drawIconIndices(buffer, icon, extent, indices);
        }
    });
}

} // namespace

void checkRows(Random& random) {
    // The cases of a run have every width in every version and format; a fuzzer's has any.
    const unsigned n = random.number > 0 ? random.number : random.word();
    const int number = std::array{0, 8, 15, 16, 24, 32}[n / 606 % 6];
    const PixelFormat format{number};
    const Extent usual{static_cast<int>(n % 202) - 1, random.between(-1, random.oneIn(5) ? 60 : 4)};
    const Extent extent = random.oneIn(99) ? Extent{8210, 1} : usual;
    limitInstructionSet(static_cast<InstructionSet>(n / 202 % 3));
    SCOPED_TRACE(testing::Message() << "format " << number << ", width " << extent.width);
    blendInto(number, extent, random);
    number <= 8    ? convertInto<std::uint8_t>(format, extent, random)
    : number <= 16 ? convertInto<std::uint16_t>(format, extent, random)
    : number == 24 ? convertInto<ColorEntry>(format, extent, random)
                   : convertInto<std::uint32_t>(format, extent, random);

    const std::uint32_t word = random.word();
    ASSERT_EQ(model::maskPixel(15, word), maskPixel15(word)) << word;
    ASSERT_EQ(model::maskPixel(16, word), maskPixel16(word)) << word;
    ASSERT_EQ(model::maskPixel(24, word), toRgb32(maskPixel24(word))) << word;
}

TEST(RowConverters, GiveWhatTheTablesAndTheModelSay) {
    runCases(12000, checkRows);
}

} // namespace talx::test
