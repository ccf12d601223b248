// Icon blending: one loop over the pixels for each buffer depth.
#include "render/pixels/icon_blend.h"

#include "render/pixels/pixel_rows.h"

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

constexpr std::uint32_t mixChannel(std::uint32_t buffer, std::uint32_t color, std::uint32_t a) {
    return (buffer * a + color * (128 - a)) >> 7;
}

// One pixel of each depth: the colour as it is stored, the half blend and the blend with weight a.

template <std::uint16_t HalfMask, int RedShift, int GreenShift, std::uint32_t GreenMask,
          std::uint16_t (*Pack)(std::uint32_t, std::uint32_t, std::uint32_t)>
struct Blend16Bit {
    using Pixel = std::uint16_t;
    static Pixel plain(std::uint32_t color) { return static_cast<Pixel>(color); }
    static Pixel half(Pixel buffer, std::uint32_t color) {
        return static_cast<Pixel>((buffer >> 1 & HalfMask) + (color >> 1 & HalfMask));
    }
    static Pixel mix(Pixel buffer, std::uint32_t color, std::uint32_t a) {
        return Pack(mixChannel(buffer >> RedShift & 0xF8, color >> RedShift & 0xF8, a),
                    mixChannel(buffer >> GreenShift & GreenMask, color >> GreenShift & GreenMask, a),
                    mixChannel(buffer << 3 & 0xFF, color << 3 & 0xFF, a));
    }
};
using Blend15 = Blend16Bit<0x7DEF, 7, 2, 0xF8, toRgb15>;
using Blend16 = Blend16Bit<0x7BEF, 8, 3, 0xFC, toRgb16>;

struct Blend24 {
    using Pixel = ColorEntry;
    static Pixel plain(std::uint32_t color) { return fromRgbWord(color); }
    static Pixel half(Pixel buffer, std::uint32_t color) {
        return fromRgbWord((toRgb32(buffer) >> 1 & 0x7F7F7F) + (color >> 1 & 0x7F7F7F));
    }
    static Pixel mix(Pixel buffer, std::uint32_t color, std::uint32_t a) {
        const ColorEntry c = fromRgbWord(color);
        return {static_cast<std::uint8_t>(mixChannel(buffer.blue, c.blue, a)),
                static_cast<std::uint8_t>(mixChannel(buffer.green, c.green, a)),
                static_cast<std::uint8_t>(mixChannel(buffer.red, c.red, a))};
    }
};

struct Blend32 {
    using Pixel = std::uint32_t;
    static Pixel plain(std::uint32_t color) { return color; }
    static Pixel half(Pixel buffer, std::uint32_t color) {
        return (buffer >> 1 & 0x7F7F7F7F) + (color >> 1 & 0x7F7F7F7F);
    }
    static Pixel mix(Pixel buffer, std::uint32_t color, std::uint32_t a) {
        // Red and blue in one product: a channel times 128 stays below the next one.
        return (mixChannel(buffer & 0xFF00FF, color & 0xFF00FF, a) & 0xFF00FF) |
               mixChannel(buffer >> 8 & 0xFF, color >> 8 & 0xFF, a) << 8;
    }
};

template <class Blend>
void blendRows(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent, const IconTables& tables) {
    using Pixel = typename Blend::Pixel;
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* out = buffer.data + y * buffer.stride;
        const std::uint8_t* in = icon.data + y * icon.stride;
        for (std::ptrdiff_t x = 0; x < extent.width; ++x, out += sizeof(Pixel)) {
            const std::uint8_t a = tables.weight[in[x]];
            if (a == invisibleWeight)
                continue;
            const std::uint32_t color = tables.color[in[x]];
            if (a == 0)
                storePixel(out, Blend::plain(color));
            else if (a == halfWeight)
                storePixel(out, Blend::half(loadPixel<Pixel>(out), color));
            else
                storePixel(out, Blend::mix(loadPixel<Pixel>(out), color, a));
        }
    }
}

} // namespace

std::uint8_t iconWeight(std::uint8_t transparency) {
    return weightTable[std::min<std::size_t>(transparency, weightTable.size() - 1)];
}

void blendIcon(PixelFormat format, const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
               const IconTables& tables) {
    switch (format) {
    case PixelFormat::Rgb15:
        return blendRows<Blend15>(buffer, icon, extent, tables);
    case PixelFormat::Rgb16:
        return blendRows<Blend16>(buffer, icon, extent, tables);
    case PixelFormat::Rgb24:
        return blendRows<Blend24>(buffer, icon, extent, tables);
    case PixelFormat::Rgb32:
        return blendRows<Blend32>(buffer, icon, extent, tables);
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
        for (std::ptrdiff_t x = 0; x < extent.width; ++x)
            out[x] = tables.transparent[in[x]] ? out[x] : tables.index[in[x]];
    }
}

} // namespace talx
