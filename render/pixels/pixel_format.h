// Pixel formats of the composition buffer: the codes, the memory they describe and the conversion of a colour
// to a pixel.
//
// Switches over a format name every one of them and have no default, so that one that is forgotten does not
// compile; what follows the switch answers numbers from outside that are no format.
#pragma once

#include "render/pixels/geometry.h"

#include <cstddef>
#include <cstdint>

namespace talx {

// The pixel format of a buffer; the values are those of TalRenderTargetFormatConstants.
enum class PixelFormat : std::int32_t {
    Unspecified = 0, // nothing is ever written
    Pal8 = 8,        // one byte: palette index
    Rgb15 = 15,      // 16-bit word, bit 15 zero, 5 bits each of red, green, blue
    Rgb16 = 16,      // 16-bit word, red 5 bits, green 6, blue 5
    Rgb24 = 24,      // bytes blue, green, red
    Rgb32 = 32       // 32-bit word 0x00RRGGBB
};

[[nodiscard]] constexpr int bytesPerPixel(PixelFormat format) {
    switch (format) {
    case PixelFormat::Unspecified:
        return 0;
    case PixelFormat::Pal8:
        return 1;
    case PixelFormat::Rgb15:
    case PixelFormat::Rgb16:
        return 2;
    case PixelFormat::Rgb24:
        return 3;
    case PixelFormat::Rgb32:
        return 4;
    }
    return 0;
}

// A colour; also the three bytes of an Rgb24 pixel.
struct ColorEntry {
    std::uint8_t blue = 0;
    std::uint8_t green = 0;
    std::uint8_t red = 0;

    friend constexpr bool operator==(const ColorEntry& a, const ColorEntry& b) {
        return a.blue == b.blue && a.green == b.green && a.red == b.red;
    }
};
static_assert(sizeof(ColorEntry) == 3);

[[nodiscard]] constexpr ColorEntry greyEntry(std::uint32_t level) {
    const auto v = static_cast<std::uint8_t>(level);
    return {v, v, v};
}

// A colour word 0x??BBGGRR, the layout of COLORREF and of a translated OLE colour.
[[nodiscard]] constexpr ColorEntry fromColorRef(std::uint32_t c) {
    return {static_cast<std::uint8_t>(c >> 16), static_cast<std::uint8_t>(c >> 8),
            static_cast<std::uint8_t>(c)};
}
[[nodiscard]] constexpr std::uint32_t toColorRef(ColorEntry e) {
    return e.red | std::uint32_t{e.green} << 8 | std::uint32_t{e.blue} << 16;
}

// A colour word 0x??RRGGBB, the layout of colour-map array elements.
[[nodiscard]] constexpr ColorEntry fromRgbWord(std::uint32_t c) {
    return {static_cast<std::uint8_t>(c), static_cast<std::uint8_t>(c >> 8),
            static_cast<std::uint8_t>(c >> 16)};
}

[[nodiscard]] constexpr std::uint16_t toRgb15(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return static_cast<std::uint16_t>((r & 0xF8) << 7 | (g & 0xF8) << 2 | b >> 3);
}
[[nodiscard]] constexpr std::uint16_t toRgb16(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return static_cast<std::uint16_t>((r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3);
}
[[nodiscard]] constexpr std::uint32_t toRgb32(std::uint32_t r, std::uint32_t g, std::uint32_t b) {
    return r << 16 | g << 8 | b;
}
[[nodiscard]] constexpr std::uint16_t toRgb15(ColorEntry e) {
    return toRgb15(e.red, e.green, e.blue);
}
[[nodiscard]] constexpr std::uint16_t toRgb16(ColorEntry e) {
    return toRgb16(e.red, e.green, e.blue);
}
[[nodiscard]] constexpr std::uint32_t toRgb32(ColorEntry e) {
    return toRgb32(e.red, e.green, e.blue);
}

// A colour as a pixel of a format, in the low bits; Rgb24 as Rgb32. 0 for formats that have no colours.
[[nodiscard]] constexpr std::uint32_t toPixel(PixelFormat format, ColorEntry e) {
    switch (format) {
    case PixelFormat::Rgb15:
        return toRgb15(e);
    case PixelFormat::Rgb16:
        return toRgb16(e);
    case PixelFormat::Rgb24:
    case PixelFormat::Rgb32:
        return toRgb32(e);
    case PixelFormat::Pal8:
    case PixelFormat::Unspecified:
        return 0;
    }
    return 0;
}

// The pixels of a buffer, top row first. Not owned; valid while the buffer is held.
struct BufferBits {
    std::uint8_t* bits = nullptr;
    std::ptrdiff_t stride = 0; // bytes from row to row
    Extent extent;
    PixelFormat format = PixelFormat::Unspecified;

    [[nodiscard]] std::uint8_t* at(std::int32_t x, std::int32_t y) const {
        return bits + y * stride + std::ptrdiff_t{x} * bytesPerPixel(format);
    }
};

// One plane of an image's pixels, 8 or 16 bits each. Rows may be stored in either direction and need no
// alignment. Not owned.
struct PlaneView {
    const std::uint8_t* data = nullptr; // pixel (0, 0)
    std::ptrdiff_t stride = 0;          // bytes from row to row
    Extent extent;
};

// Pixels to be written: the destination of a kernel or a row converter. Not owned.
struct PixelRows {
    std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0; // bytes from row to row
};

// Pixels to be read. Not owned.
struct ConstPixelRows {
    const std::uint8_t* data = nullptr;
    std::ptrdiff_t stride = 0; // bytes from row to row
};

} // namespace talx
