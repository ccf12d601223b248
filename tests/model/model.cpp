// The per-pixel model of drawing.
#include "tests/model/model.h"

#include <algorithm>
#include <cmath>

namespace talx::model {

namespace {

// v without its fraction; held at +-2^62, and 0 when it is not a number.
std::int64_t trunc64(double v) {
    return std::isnan(v) ? 0 : static_cast<std::int64_t>(std::clamp(v, -0x1p62, 0x1p62));
}

std::int32_t to32Bits(std::int64_t v) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(v, INT32_MIN, INT32_MAX));
}

std::int32_t roundedSize(int size, double scale) {
    return to32Bits(trunc64(std::floor(size * scale + 0.5)));
}

Rect intersect(const Rect& a, const Rect& b) {
    const Rect r{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                 std::min(a.bottom, b.bottom)};
    return r.left >= r.right || r.top >= r.bottom ? Rect{} : r;
}

// The whole number within 1e-10 of v, or 0.
double wholeNumberAt(double v) {
    for (const double more : {0.0, 1.0, 2.0}) {
        const double k = std::trunc(v) + more;
        if (k <= std::trunc(v + 2.0) - 1.0 && k > v - 1e-10 && v + 1e-10 > k) {
            return k;
        }
    }
    return 0.0;
}

// On one axis: the source index seen at "at" of the scaled image.
std::int64_t nearestIndex(std::int64_t at, double scale) {
    const double k = scale > 1.0 ? wholeNumberAt(scale) : 0.0;
    if (k != 0.0) { // blocks of k pixels
        const std::int64_t block = trunc64(k);
        return at >= 0 ? at / block : -((block - 1 - at) / block);
    }
    const double inv = 1.0 / scale;
    return trunc64(at * inv);
}

// The centre-aligned method on one axis of a source.
struct CentreAxis {
    double inv, c;
    std::int64_t first, end; // the computable pixels of the scaled image, end exclusive

    CentreAxis(int size, double scale) : inv(1.0 / scale) {
        const double m = std::max(scale, inv);
        c = scale > 1.0 && wholeNumberAt(m) != 0.0 ? 0.5 - 0.5 * inv : 0.5;
        first = trunc64(std::ceil(c * scale));
        end = trunc64(std::ceil((size - c) * scale) - 1.0);
    }

    // The source index seen at "at" when the part from start to stop is made.
    [[nodiscard]] std::int64_t index(std::int64_t start, std::int64_t stop, std::int64_t at) const {
        std::int64_t from = std::max(start, first);
        const std::int64_t to = std::min(stop, end);
        if (from < to) {
            at = std::clamp(at, from, to - 1); // margins show the outermost inner pixel
        } else {
            at = from = stop <= first ? first : end - 1; // everything shows the nearest that there is
        }
        const std::int64_t step = trunc64(inv * 65536.0) << 16;
        const std::int64_t position = trunc64((from * inv - c) * 65536.0) << 16;
        return (position + (at - from) * step) >> 32;
    }
};

Color entryOrGrey(const std::vector<Color>& entries, std::uint32_t index, std::uint32_t grey) {
    const auto level = static_cast<std::uint8_t>(grey);
    return index < entries.size() ? entries[index] : Color{level, level, level};
}

// What the source pixel p shows.
std::uint32_t imagePixel(int format, const Image& image, const ColorState& colors, Position p) {
    const auto value = [&](std::size_t plane) {
        return image.planes.at(plane).at(p.x, p.y);
    };
    const auto byte = [&](std::size_t plane) {
        return static_cast<std::uint8_t>(value(plane));
    };
    switch (image.kind) {
    case Kind::grey8:
        return greyPixel8(format, colors, byte(0));
    case Kind::color:
        return pack(format, {byte(0), byte(1), byte(2)});
    case Kind::grey16:
        return greyPixel16(format, colors.grey16, valueCount(image.depthCode), value(0));
    default:
        return colors.maskEnabled && image.planes.size() > 1 && value(1) == 0
                   ? maskPixel(format, colors.maskColor)
                   : greyPixel16(format, colors.range16, 65536, value(0));
    }
}

// Hands each buffer pixel inside clip that a source placed at (left, top) covers to paint, together with the
// position in the source of what is seen there.
template <class Paint>
void paintPixels(Buffer& buffer, const Plane& source, std::int32_t left, std::int32_t top, double scale,
                 const Rect& clip, int scalingMethod, const Paint& paint) {
    const Rect placed = place(left, top, source.width, source.height, scale);
    const Rect drawn = intersect(intersect(placed, clip), {0, 0, buffer.width, buffer.height});
    const Rect target{drawn.left - left, drawn.top - top, drawn.right - left, drawn.bottom - top};
    const bool isUnit = 0.9999999999 < scale && scale < 1.0000000001;
    for (std::int64_t y = target.top; y < target.bottom; ++y) {
        for (std::int64_t x = target.left; x < target.right; ++x) {
            const auto seen = isUnit
                                  ? Position{x, y}
                                  : sourceOf(source.width, source.height, scale, target, scalingMethod, x, y);
            if (seen) {
                paint(buffer.at(x + left, y + top), *seen);
            }
        }
    }
}

} // namespace

Rect place(std::int32_t sx, std::int32_t sy, int width, int height, double scale) {
    return {sx, sy, to32Bits(std::int64_t{sx} + roundedSize(width, scale)),
            to32Bits(std::int64_t{sy} + roundedSize(height, scale))};
}

std::optional<Position> sourceOf(int width, int height, double scale, const Rect& target, int scalingMethod,
                                 std::int64_t x, std::int64_t y) {
    Position p{nearestIndex(x, scale), nearestIndex(y, scale)};
    if (scalingMethod == centreMethod) {
        if (target.right - target.left < 3 || target.bottom - target.top < 3) {
            return std::nullopt;
        }
        const CentreAxis across(width, scale), down(height, scale);
        if (across.first < across.end && down.first < down.end) {
            p = {across.index(target.left, target.right, x), down.index(target.top, target.bottom, y)};
        }
    }
    return Position{std::clamp<std::int64_t>(p.x, 0, width - 1),
                    std::clamp<std::int64_t>(p.y, 0, height - 1)};
}

std::uint32_t pack(int format, Color color) {
    const std::uint32_t r = color.red, g = color.green, b = color.blue;
    return format == 15   ? (r & 0xF8) << 7 | (g & 0xF8) << 2 | b >> 3
           : format == 16 ? (r & 0xF8) << 8 | (g & 0xFC) << 3 | b >> 3
                          : r << 16 | g << 8 | b; // 24 bits: the bytes blue, green, red
}

std::uint32_t greyPixel8(int format, const ColorState& colors, std::uint8_t value) {
    return format == 8 ? colors.paletteIndex[value] : pack(format, entryOrGrey(colors.grey8, value, value));
}

std::uint32_t valueCount(std::int32_t depthCode) {
    constexpr int bits[] = {16, 10, 12, 14, 16, 8};
    return 1u << (0 <= depthCode && depthCode <= 5 ? bits[depthCode] : 16);
}

std::uint32_t greyPixel16(int format, const std::vector<Color>& entries, std::uint32_t count,
                          std::uint16_t value) {
    const std::uint32_t v = value & (count - 1);
    return pack(format, entryOrGrey(entries, v, v / (count / 256)));
}

std::uint32_t maskPixel(int format, std::uint32_t word) {
    const auto signedByte = [&](int shift) {
        const auto byte = static_cast<std::uint8_t>(word >> shift);
        return byte < 128 ? byte : byte - 256;
    };
    const int hi = signedByte(16), mid = signedByte(8), lo = signedByte(0);
    // A factor stands for a left shift, and & ~7 of a negative number for AND 0xFFF8 in 16 bits.
    const int wide = format == 15 ? ((hi & ~7) * 32 + (mid & ~7)) * 4 : ((hi & ~7) * 16 + (mid & ~3)) * 16;
    return format == 32 ? word : format == 24 ? word & 0xFFFFFF : (wide + (lo >> 3)) & 0xFFFF;
}

void drawImage(Buffer& buffer, const Image& image, const ColorState& colors, std::int32_t sx, std::int32_t sy,
               double scale, const Rect& caller, int scalingMethod) {
    paintPixels(buffer, image.planes.at(0), sx, sy, scale, caller, scalingMethod,
                [&](std::uint32_t& pixel, Position p) {
                    if (buffer.format != 8 || image.kind == Kind::grey8) {
                        pixel = imagePixel(buffer.format, image, colors, p);
                    }
                });
}

std::uint32_t iconWeight(std::uint8_t transparency) {
    return static_cast<std::uint32_t>(std::floor(std::min<int>(transparency, 100) * 1.28 + 0.5));
}

std::uint32_t blend(int format, std::uint32_t buffer, Color color, std::uint32_t weight) {
    const std::uint32_t word = pack(format, color);
    if (weight == 128 || weight == 0) {
        return weight == 128 ? buffer : word;
    }
    if (weight == 64) {
        const std::uint32_t mask = format == 15 ? 0x7DEF : format == 16 ? 0x7BEF : 0x7F7F7F7F;
        return (word >> 1 & mask) + (buffer >> 1 & mask);
    }
    const auto mixed = [&](int shift, int bits) {
        const std::uint32_t mask = 0xFFu >> (8 - bits);
        const std::uint32_t under = (buffer >> shift & mask) << (8 - bits);
        const std::uint32_t over = (word >> shift & mask) << (8 - bits);
        return (under * weight + over * (128 - weight)) >> 7 >> (8 - bits) << shift;
    };
    return format == 15   ? mixed(10, 5) | mixed(5, 5) | mixed(0, 5)
           : format == 16 ? mixed(11, 5) | mixed(5, 6) | mixed(0, 5)
                          : mixed(16, 8) | mixed(8, 8) | mixed(0, 8);
}

void drawIcon(Buffer& buffer, const Icon& icon, double x, double y, double scale, const Rect& caller,
              const NearestIndex& nearest) {
    x = std::isnan(x) ? 0.0 : x;
    y = std::isnan(y) ? 0.0 : y;
    const std::int32_t left = to32Bits(trunc64(x)), top = to32Bits(trunc64(y));
    const Rect wanted{left, top, to32Bits(trunc64(x + roundedSize(icon.pixels.width, scale))),
                      to32Bits(trunc64(y + roundedSize(icon.pixels.height, scale)))};
    const auto paint = [&](std::uint32_t& pixel, Position p) {
        const auto index = static_cast<std::uint8_t>(icon.pixels.at(p.x, p.y));
        const std::uint8_t transparency = icon.transparency[index];
        if (buffer.format != 8) {
            pixel = blend(buffer.format, pixel, icon.colors[index], iconWeight(transparency));
        } else if (transparency != 100) {
            pixel = transparency == 0 ? 0 : nearest(icon.colors[index]);
        }
    };
    paintPixels(buffer, icon.pixels, left, top, scale, intersect(wanted, caller), nearestMethod, paint);
}

} // namespace talx::model
