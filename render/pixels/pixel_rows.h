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

// The same for 24-bit pixels, which pixelAt gives as words 0x00RRGGBB: four leave as a word of eight bytes
// and one of four.
template <class PixelAt>
inline void writeRow24(std::uint8_t* out, std::ptrdiff_t width, PixelAt pixelAt) {
    std::ptrdiff_t x = 0;
    for (; x + 4 <= width; x += 4, out += 12) {
        const std::uint64_t p0 = pixelAt(x), p1 = pixelAt(x + 1), p2 = pixelAt(x + 2), p3 = pixelAt(x + 3);
        storePixel(out, p0 | p1 << 24 | p2 << 48);
        storePixel(out + 8, static_cast<std::uint32_t>(p2 >> 16 | p3 << 8));
    }
    for (; x < width; ++x, out += 3)
        storePixel(out, fromRgbWord(pixelAt(x)));
}

} // namespace talx
