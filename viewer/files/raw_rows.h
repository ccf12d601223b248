// Raw pixels as a file has them, strip by strip, into a picture in which nothing is lost: what cannot be
// shown as it is stays beside what is shown.
//
// - Grey of 8 or 16 bits is taken as it is, without a second copy.
// - Other whole numbers give colours of 8 bits, rounded; the values of 16-bit ones are kept. A picture
//   whose pixels are all grey is a grey one, however the file says it.
// - Alpha that is not opaque everywhere is shown on a checkerboard of squares of 8 x 8 pixels; the file's
//   values, alpha the last, are kept.
// - Other grey numbers, floating-point ones first of all, are spread over 16 bits: the smallest is 0, the
//   largest 65535, and the picture's scale leads back. Infinite ones are 0 or 65535, and what is no number
//   is 0.
// - Floating-point colours are light: 0 is black and 1 is white, what lies beyond is shown as these, and
//   between them the curve of the screen (sRGB) is applied.
// The values of both are kept as they are, in 32-bit floating point.
#pragma once

#include "viewer/view/picture.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace talview {

enum class Colors { grey, palette, rgb, bgr, cmyk };
enum class Alpha { none, straight, premultiplied };

// How a file's pixels lie in memory. Samples of 16 and 32 bits are in the machine's own order of bytes.
struct RawFormat {
    Colors colors = Colors::grey;
    int samples = 1; // of a pixel; of four without alpha, the last of red, green and blue means nothing
    int bits = 8; // of a sample: 1, 2, 4 and 8 of grey and palettes, 8 and 16 of all, 16 and 32 of fixedPoint
                  // (13 and 24 of them behind the point) and real, 32 of other grey
    Sample sample = Sample::whole;
    Alpha alpha = Alpha::none; // of the fourth sample

    // Bytes of a row.
    [[nodiscard]] std::size_t stride(long width) const {
        return (static_cast<std::size_t>(width) * samples * bits + 7) / 8;
    }
};

// The two greys under what can be seen through; the light one lies in the top left corner.
constexpr std::uint8_t lightSquare = 204;
constexpr std::uint8_t darkSquare = 153;

class RawRows {
public:
    virtual ~RawRows() = default;
    // Where the raw pixels of so many rows are to be put, one row right behind the other. Rows come from the
    // top on, each once.
    [[nodiscard]] virtual std::uint8_t* place(long first, long count) = 0;
    // They are there.
    virtual void convert(long first, long count) = 0;
    // The picture. The rows that were not given are black; their values are 0, or no numbers.
    [[nodiscard]] virtual Picture finish(long rows) = 0;
};

// depth: significant bits of 16-bit grey. palette: 0xAARRGGBB; indices beyond it are black. The result holds
// the memory for the picture, which std::bad_alloc tells if there is not enough.
[[nodiscard]] std::unique_ptr<RawRows> rawRows(const RawFormat& format, long width, long height, int depth,
                                               const std::vector<std::uint32_t>& palette);

namespace detail {
[[nodiscard]] Picture sized(PictureKind kind, long width, long height, int depth);
[[nodiscard]] std::unique_ptr<RawRows> colorRows(const RawFormat& format, long width, long height, int depth,
                                                 const std::vector<std::uint32_t>& palette);
[[nodiscard]] std::unique_ptr<RawRows> realRows(const RawFormat& format, long width, long height);
// What lies under a pixel that can be seen through.
[[nodiscard]] std::uint8_t square(long x, long y);
} // namespace detail

} // namespace talview
