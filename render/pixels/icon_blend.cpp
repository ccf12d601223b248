// Icon blending: what every depth has in common is one formula for four bytes of a pixel; the depths differ
// in how a pixel is taken apart and put together. Here are the plain versions.
#include "render/pixels/icon_blend.h"

#include "render/pixels/pixel_rows.h"
#include "render/pixels/row_converters.h"
#include "render/pixels/versions.h"

#include <algorithm>

namespace talx {
namespace {

constexpr std::uint8_t halfWeight = 64;

constexpr std::array<std::uint8_t, 101> weightTable = [] {
    std::array<std::uint8_t, 101> table{};
    for (int t = 0; t <= 100; ++t)
        table[t] = static_cast<std::uint8_t>(t * 1.28 + 0.5); // never negative: cutting is flooring
    return table;
}();

// A pixel as four bytes, 0x??RRGGBB, and back. The highest byte is what is no colour: of 32-bit pixels their
// own, of 15-bit ones the unused bit.

struct Split15 {
    using Pixel = std::uint16_t;
    static constexpr bool hasMore = true;              // than colours
    static constexpr std::uint32_t lowBits = 0x080808; // of each channel
    static constexpr std::uint32_t apart(std::uint32_t p) {
        return (p & 0x8000) << 16 | (p << 9 & 0xF80000) | (p << 6 & 0xF800) | (p << 3 & 0xF8);
    }
    static constexpr Pixel together(std::uint32_t c) {
        return static_cast<Pixel>((c >> 16 & 0xFF00) +
                                  ((c >> 9 & 0x7C00) | (c >> 6 & 0x03E0) | (c >> 3 & 0x1F)));
    }
};
struct Split16 {
    using Pixel = std::uint16_t;
    static constexpr bool hasMore = false;
    static constexpr std::uint32_t lowBits = 0x080408;
    static constexpr std::uint32_t apart(std::uint32_t p) {
        return (p << 8 & 0xF80000) | (p << 5 & 0xFC00) | (p << 3 & 0xF8);
    }
    static constexpr Pixel together(std::uint32_t c) {
        return static_cast<Pixel>((c >> 8 & 0xF800) | (c >> 5 & 0x07E0) | (c >> 3 & 0x1F));
    }
};
struct Split24 {
    using Pixel = ColorEntry;
    static constexpr bool hasMore = false;
    static constexpr std::uint32_t lowBits = 0x010101;
    static constexpr std::uint32_t apart(std::uint32_t p) { return p; }
    static constexpr std::uint32_t apart(ColorEntry p) { return toRgb32(p); }
    static constexpr Pixel together(std::uint32_t c) { return fromRgbWord(c); }
};
struct Split32 {
    using Pixel = std::uint32_t;
    static constexpr bool hasMore = true;
    static constexpr std::uint32_t lowBits = 0x010101;
    static constexpr std::uint32_t apart(std::uint32_t p) { return p; }
    static constexpr Pixel together(std::uint32_t c) { return c; }
};

// Two bytes of a pixel in one product each: a byte times 128 stays below the next one, and what the
// difference borrows from there the colour gives back.
constexpr std::uint32_t evenBytes = 0xFF00FF;

constexpr std::uint32_t mixBytes(std::uint32_t pixel, std::uint32_t color, std::uint32_t a) {
    return ((color << 7) + (pixel - color) * a) >> 7;
}

template <class Split>
constexpr std::uint32_t mix(std::uint32_t pixel, std::uint32_t color, std::uint32_t weight) {
    const std::uint32_t a = weight & 0xFF;
    const std::uint32_t redBlue = mixBytes(pixel & evenBytes, color & evenBytes, a) & evenBytes;
    const std::uint32_t colors = redBlue | mixBytes(pixel >> 8 & 0xFF, color >> 8 & 0xFF, a) << 8;
    return Split::hasMore ? colors | ((pixel >> 24) * (weight >> 24) >> 7) << 24 : colors;
}

template <class Split>
void blendRows(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent, const BlendTable& table) {
    using Pixel = typename Split::Pixel;
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* out = buffer.data + y * buffer.stride;
        const std::uint8_t* in = icon.data + y * icon.stride;
        writeRow<Pixel>(
            out, extent.width,
            [=, color = table.color.data(), weight = table.weight.data()](std::ptrdiff_t x) {
                const auto before = loadPixel<Pixel>(out + x * static_cast<std::ptrdiff_t>(sizeof(Pixel)));
                return Split::together(mix<Split>(Split::apart(before), color[in[x]], weight[in[x]]));
            });
    }
}

// The half blend adds halves, which drop their low bits each: without the colour's own that is the blend with
// weight 64. What is no colour is kept whole or by half, and else goes.
template <class Split>
BlendTable blendTable(const IconTables& tables) {
    BlendTable table;
    for (std::size_t i = 0; i < table.color.size(); ++i) {
        const std::uint32_t a = tables.weight[i];
        table.color[i] = Split::apart(tables.color[i]) & (a == halfWeight ? ~Split::lowBits : ~0u);
        table.weight[i] = a * 0x010101 | (a == invisibleWeight || a == halfWeight ? a << 24 : 0);
    }
    return table;
}

template <class Split>
void blend(BlendLoop loop, const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
           const IconTables& tables) {
    if (std::all_of(tables.weight.begin(), tables.weight.end(), [](std::uint8_t a) { return a == 0; })) {
        std::array<typename Split::Pixel, 256> pixels;
        std::transform(tables.color.begin(), tables.color.end(), pixels.begin(),
                       [](std::uint32_t color) { return Split::together(Split::apart(color)); });
        return convertGrey8(buffer, icon, extent, pixels.data());
    }
    loop(buffer, icon, extent, blendTable<Split>(tables));
}

} // namespace

void takePlainIconBlend(Versions& versions) {
    versions.blend15 = blendRows<Split15>;
    versions.blend16 = blendRows<Split16>;
    versions.blend24 = blendRows<Split24>;
    versions.blend32 = blendRows<Split32>;
}

std::uint8_t iconWeight(std::uint8_t transparency) {
    return weightTable[std::min<std::size_t>(transparency, weightTable.size() - 1)];
}

void blendIcon(PixelFormat format, const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
               const IconTables& tables) {
    const Versions& versions = activeVersions();
    switch (format) {
    case PixelFormat::Rgb15:
        return blend<Split15>(versions.blend15, buffer, icon, extent, tables);
    case PixelFormat::Rgb16:
        return blend<Split16>(versions.blend16, buffer, icon, extent, tables);
    case PixelFormat::Rgb24:
        return blend<Split24>(versions.blend24, buffer, icon, extent, tables);
    case PixelFormat::Rgb32:
        return blend<Split32>(versions.blend32, buffer, icon, extent, tables);
    case PixelFormat::Pal8:
    case PixelFormat::Unspecified:
        return;
    }
}

void drawIconIndices(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
                     const IconIndexTables& tables) {
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* out = buffer.data + y * buffer.stride;
        const std::uint8_t* in = icon.data + y * icon.stride;
        writeRow<std::uint8_t>(out, extent.width, [=, &tables](std::ptrdiff_t x) {
            return tables.transparent[in[x]] ? out[x] : tables.index[in[x]];
        });
    }
}

} // namespace talx
