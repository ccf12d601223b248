// Pixels in memory without alignment, and the loop over one row that every converter and kernel shares.
#pragma once

#include "render/pixels/pixel_format.h"

#include <cstring>

namespace talx {

template <class Pixel>
[[nodiscard]] inline Pixel loadPixel(const std::uint8_t* from) {
    Pixel pixel;
    std::memcpy(&pixel, from, sizeof pixel);
    return pixel;
}

template <class Pixel>
inline void storePixel(std::uint8_t* to, Pixel pixel) {
    std::memcpy(to, &pixel, sizeof pixel);
}

template <class Pixel>
inline void storeFour(std::uint8_t* to, Pixel p0, Pixel p1, Pixel p2, Pixel p3) {
    storePixel(to, p0);
    storePixel(to + sizeof(Pixel), p1);
    storePixel(to + 2 * sizeof(Pixel), p2);
    storePixel(to + 3 * sizeof(Pixel), p3);
}
// 24-bit pixels leave as two words, at less than half the time of their twelve bytes.
template <>
inline void storeFour(std::uint8_t* to, ColorEntry p0, ColorEntry p1, ColorEntry p2, ColorEntry p3) {
    const std::uint64_t third = toRgb32(p2);
    storePixel(to, toRgb32(p0) | std::uint64_t{toRgb32(p1)} << 24 | third << 48);
    storePixel(to + 8, static_cast<std::uint32_t>(third >> 16) | toRgb32(p3) << 8);
}

// Writes pixelAt(0) to pixelAt(width - 1), four at a time: all four are known before the first is stored, so
// no load waits for a store that might alias it.
template <class Pixel, class PixelAt>
inline void writeRow(std::uint8_t* out, std::ptrdiff_t width, PixelAt pixelAt) {
    std::ptrdiff_t x = 0;
    for (; x + 4 <= width; x += 4, out += 4 * sizeof(Pixel)) {
        const Pixel p0 = pixelAt(x), p1 = pixelAt(x + 1), p2 = pixelAt(x + 2), p3 = pixelAt(x + 3);
        storeFour<Pixel>(out, p0, p1, p2, p3);
    }
    for (; x < width; ++x, out += sizeof(Pixel))
        storePixel<Pixel>(out, pixelAt(x));
}

} // namespace talx
