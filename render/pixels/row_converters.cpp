// Row converters: table look-ups and packing, each a loop over whole rows. Here are the plain versions.
#include "render/pixels/row_converters.h"

#include "render/pixels/pixel_rows.h"
#include "render/pixels/versions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <type_traits>

namespace talx {
namespace {

template <class Entry, class PixelAt>
void writeEntries(std::uint8_t* out, std::ptrdiff_t width, PixelAt pixelAt) {
    if constexpr (std::is_same_v<Entry, ColorEntry>)
        writeRow24(out, width, pixelAt);
    else
        writeRow<Entry>(out, width, pixelAt);
}

// The inner loops see only locals: what a lambda holds by reference would be read again after every store.
template <class Entry>
void grey8Rows(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
               const Entry* table) {
    using Loaded = std::conditional_t<std::is_same_v<Entry, ColorEntry>, std::uint32_t, Entry>;
    std::array<std::uint32_t, 256> words; // three bytes cannot be loaded at once, four can
    const Loaded* entries = nullptr;
    if constexpr (std::is_same_v<Entry, ColorEntry>) {
        std::transform(table, table + words.size(), words.begin(), [](ColorEntry e) { return toRgb32(e); });
        entries = words.data();
    } else {
        entries = table;
    }
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* in = source.data + y * source.stride;
        writeEntries<Entry>(destination.data + y * destination.stride, extent.width,
                            [=](std::ptrdiff_t x) { return entries[in[x]]; });
    }
}

void narrowRow(std::uint8_t* out, const std::uint8_t* in, std::ptrdiff_t width, std::uint32_t mask,
               int shift) {
    const auto mask16 = static_cast<std::uint16_t>(mask);
    writeRow<std::uint8_t>(out, width, [=](std::ptrdiff_t x) {
        const auto word = static_cast<std::uint16_t>(loadPixel<std::uint16_t>(in + 2 * x) & mask16);
        return static_cast<std::uint8_t>(word >> shift);
    });
}

// Entry is the table entry of the format that Pack makes.
template <class Entry, auto Pack>
void packRows(const PixelRows& destination, const ConstPixelRows& red, const ConstPixelRows& green,
              const ConstPixelRows& blue, Extent extent) {
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* r = red.data + y * red.stride;
        const std::uint8_t* g = green.data + y * green.stride;
        const std::uint8_t* b = blue.data + y * blue.stride;
        writeEntries<Entry>(destination.data + y * destination.stride, extent.width,
                            [=](std::ptrdiff_t x) { return Pack(r[x], g[x], b[x]); });
    }
}
constexpr auto pack15 = [](std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return toRgb15(r, g, b);
};
constexpr auto pack16 = [](std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return toRgb16(r, g, b);
};
constexpr auto pack32 = [](std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return toRgb32(r, g, b);
};

template <class Entry>
Grey8Loop<Entry> grey8Loop() {
    const Versions& versions = activeVersions();
    if constexpr (std::is_same_v<Entry, std::uint8_t>)
        return versions.grey8To8;
    else if constexpr (std::is_same_v<Entry, std::uint16_t>)
        return versions.grey8To16;
    else if constexpr (std::is_same_v<Entry, ColorEntry>)
        return versions.grey8To24;
    else
        return versions.grey8To32;
}

template <class Entry>
LevelLoop<Entry> levelLoop() {
    const Versions& versions = activeVersions();
    if constexpr (std::is_same_v<Entry, std::uint16_t>)
        return versions.levelsTo16;
    else if constexpr (std::is_same_v<Entry, ColorEntry>)
        return versions.levelsTo24;
    else
        return versions.levelsTo32;
}

template <class Entry>
HideLoop<Entry> hideLoop() {
    const Versions& versions = activeVersions();
    if constexpr (std::is_same_v<Entry, std::uint16_t>)
        return versions.hide16;
    else if constexpr (std::is_same_v<Entry, ColorEntry>)
        return versions.hide24;
    else
        return versions.hide32;
}

// An entry of a large table, 24-bit ones as words.
template <class Entry>
auto loadEntry(const Entry* entry) {
    if constexpr (std::is_same_v<Entry, ColorEntry>) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(entry);
        return loadPixel<std::uint16_t>(bytes) | std::uint32_t{bytes[2]} << 16;
    } else {
        return *entry;
    }
}

// first or second, chosen without a branch: masks of noisy images cannot be predicted.
template <class Word>
Word choose(bool chooseFirst, Word first, Word second) {
    const auto keep = static_cast<Word>(-static_cast<int>(chooseFirst));
    return static_cast<Word>(second ^ ((first ^ second) & keep));
}

// Where the mask is 0 the pixel becomes maskPixel.
template <class Entry>
void hideRow(std::uint8_t* out, const std::uint8_t* visible, std::ptrdiff_t width, Entry maskPixel) {
    if constexpr (std::is_same_v<Entry, ColorEntry>) {
        const std::uint32_t word = toRgb32(maskPixel);
        writeRow24(out, width, [=](std::ptrdiff_t x) {
            return choose(visible[x] != 0, loadEntry(reinterpret_cast<const ColorEntry*>(out + 3 * x)), word);
        });
    } else {
        writeRow<Entry>(out, width, [=](std::ptrdiff_t x) {
            const auto shown = loadPixel<Entry>(out + x * static_cast<std::ptrdiff_t>(sizeof(Entry)));
            return choose(visible[x] != 0, shown, maskPixel);
        });
    }
}

// Whether a table's entries come in 256 runs of equal ones, as those of a grey ramp do: then 8 bits of a
// value tell its entry, and 256 entries stay in the fastest memory where a large table would not. Asked only
// for drawings so large that looking through the table costs next to nothing.
template <class Entry>
bool hasRuns(const Entry* table, std::uint32_t maxValue, Extent extent) {
    const std::size_t size = maxValue + std::size_t{1};
    const std::int64_t pixels = std::int64_t{extent.width} * extent.height;
    if (extent.empty() || !std::has_single_bit(size) || size < 256 ||
        pixels < static_cast<std::int64_t>(4 * size))
        return false;
    const std::size_t repeated = (size / 256 - 1) * sizeof(Entry); // bytes after a run's first entry
    for (std::size_t first = 0; first < size; first += size / 256) {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(table + first);
        std::uint8_t difference = 0;
        for (std::size_t i = 0; i < repeated; ++i)
            difference |= bytes[i] ^ bytes[i + sizeof(Entry)];
        if (difference != 0)
            return false;
    }
    return true;
}

template <class Entry>
void hideRows(const PixelRows& out, const HiddenPixels<Entry>& hidden, Extent extent) {
    const auto hide = hideLoop<Entry>();
    for (std::ptrdiff_t y = 0; y < extent.height; ++y)
        hide(out.data + y * out.stride, hidden.mask.data + y * hidden.mask.stride, extent.width,
             hidden.pixel);
}

// The part of rows that begins at pixel (x, y).
template <class Rows>
Rows rowsFrom(const Rows& rows, std::ptrdiff_t x, std::ptrdiff_t y, std::size_t pixelBytes) {
    return {rows.data + y * rows.stride + x * static_cast<std::ptrdiff_t>(pixelBytes), rows.stride};
}

// Makes bytes of the values first, a tile at a time, which stays in the fastest caches.
template <class Entry>
void levelRows(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
               const LevelTable<Entry>& table, const HiddenPixels<Entry>* hidden) {
    constexpr std::int32_t tilePixels = 8192;
    std::array<std::uint8_t, tilePixels> narrowed;
    const NarrowLoop narrow = activeVersions().narrow;
    const auto convert = grey8Loop<Entry>();
    const std::int32_t width = std::min(extent.width, tilePixels);
    const std::int32_t height = tilePixels / width;
    for (std::int32_t y = 0; y < extent.height; y += height) {
        for (std::int32_t x = 0; x < extent.width; x += width) {
            const Extent tile{std::min(width, extent.width - x), std::min(height, extent.height - y)};
            for (std::ptrdiff_t row = 0; row < tile.height; ++row) {
                narrow(&narrowed[static_cast<std::size_t>(row * tile.width)],
                       rowsFrom(source, x, y + row, 2).data, tile.width, table.mask, table.shift);
            }
            const PixelRows out = rowsFrom(destination, x, y, sizeof(Entry));
            convert(out, {narrowed.data(), tile.width}, tile, table.entries);
            if (hidden)
                hideRows<Entry>(out, {rowsFrom(hidden->mask, x, y, 1), hidden->pixel}, tile);
        }
    }
}

// 16-bit values through any table.
template <class Entry>
void convertValues(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                   const Entry* table, std::uint32_t maxValue, const HiddenPixels<Entry>* hidden) {
    if (hasRuns(table, maxValue, extent)) {
        std::array<Entry, 256> levels;
        const std::size_t run = (maxValue + std::size_t{1}) / levels.size();
        for (std::size_t level = 0; level < levels.size(); ++level)
            levels[level] = table[level * run];
        return levelLoop<Entry>()(destination, source, extent,
                                  {levels.data(), maxValue, std::countr_zero(run)}, hidden);
    }
    for (std::int32_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* in = source.data + y * source.stride;
        const PixelRows out = rowsFrom(destination, 0, y, sizeof(Entry));
        const auto valueAt = [in](std::ptrdiff_t x) {
            return std::uint32_t{loadPixel<std::uint16_t>(in + 2 * x)};
        };
        if (maxValue == 65535) {
            writeEntries<Entry>(out.data, extent.width,
                                [=](std::ptrdiff_t x) { return loadEntry(table + valueAt(x)); });
        } else {
            writeEntries<Entry>(out.data, extent.width,
                                [=](std::ptrdiff_t x) { return loadEntry(table + (valueAt(x) & maxValue)); });
        }
        if (hidden)
            hideRows<Entry>(out, {rowsFrom(hidden->mask, 0, y, 1), hidden->pixel}, Extent{extent.width, 1});
    }
}

// A byte of the mask colour as the 16-bit arithmetic takes it: sign-extended.
std::int32_t signedByte(std::uint32_t word, int shift) {
    return static_cast<std::int8_t>(word >> shift);
}

} // namespace

void takePlainRowConverters(Versions& versions) {
    versions.grey8To8 = grey8Rows<std::uint8_t>;
    versions.grey8To16 = grey8Rows<std::uint16_t>;
    versions.grey8To24 = grey8Rows<ColorEntry>;
    versions.grey8To32 = grey8Rows<std::uint32_t>;
    versions.levelsTo16 = levelRows<std::uint16_t>;
    versions.levelsTo24 = levelRows<ColorEntry>;
    versions.levelsTo32 = levelRows<std::uint32_t>;
    versions.narrow = narrowRow;
    versions.hide16 = hideRow<std::uint16_t>;
    versions.hide24 = hideRow<ColorEntry>;
    versions.hide32 = hideRow<std::uint32_t>;
    versions.colorTo15 = packRows<std::uint16_t, pack15>;
    versions.colorTo16 = packRows<std::uint16_t, pack16>;
    versions.colorTo24 = packRows<ColorEntry, pack32>;
    versions.colorTo32 = packRows<std::uint32_t, pack32>;
}

template <class Entry>
void convertGrey8(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                  const Entry* table) {
    grey8Loop<Entry>()(destination, source, extent, table);
}

template <class Entry>
void convertGrey16(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                   const Entry* table, std::uint32_t maxValue) {
    convertValues<Entry>(destination, source, extent, table, maxValue, nullptr);
}

template <class Entry>
void convertMaskedRange16(const PixelRows& destination, const ConstPixelRows& source,
                          const ConstPixelRows& mask, Extent extent, const Entry* table,
                          std::uint32_t maxValue, Entry maskPixel) {
    const HiddenPixels<Entry> hidden{mask, maskPixel};
    convertValues(destination, source, extent, table, maxValue, &hidden);
}

template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint8_t*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint16_t*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const ColorEntry*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint32_t*);

template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const std::uint16_t*,
                            std::uint32_t);
template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const ColorEntry*,
                            std::uint32_t);
template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const std::uint32_t*,
                            std::uint32_t);

template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const std::uint16_t*, std::uint32_t, std::uint16_t);
template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const ColorEntry*, std::uint32_t, ColorEntry);
template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const std::uint32_t*, std::uint32_t, std::uint32_t);

void convertColor(PixelFormat format, const PixelRows& destination, const ConstPixelRows& red,
                  const ConstPixelRows& green, const ConstPixelRows& blue, Extent extent) {
    const Versions& versions = activeVersions();
    switch (format) {
    case PixelFormat::Rgb15:
        return versions.colorTo15(destination, red, green, blue, extent);
    case PixelFormat::Rgb16:
        return versions.colorTo16(destination, red, green, blue, extent);
    case PixelFormat::Rgb24:
        return versions.colorTo24(destination, red, green, blue, extent);
    case PixelFormat::Rgb32:
        return versions.colorTo32(destination, red, green, blue, extent);
    case PixelFormat::Pal8:
    case PixelFormat::Unspecified:
        return;
    }
}

std::uint16_t maskPixel15(std::uint32_t word) {
    const std::uint32_t hi = signedByte(word, 16) & 0xFFF8;
    const std::uint32_t mid = signedByte(word, 8) & 0xFFF8;
    return static_cast<std::uint16_t>((((hi << 5) + mid) << 2) + (signedByte(word, 0) >> 3));
}

std::uint16_t maskPixel16(std::uint32_t word) {
    const std::uint32_t hi = signedByte(word, 16) & 0xFFF8;
    const std::uint32_t mid = signedByte(word, 8) & 0xFFFC;
    return static_cast<std::uint16_t>((((hi << 4) + mid) << 4) + (signedByte(word, 0) >> 3));
}

ColorEntry maskPixel24(std::uint32_t word) {
    return fromRgbWord(word);
}

} // namespace talx
