// Rectangles and the arithmetic of placing: rounding, cutting and saturating, with no value out of range.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace talx {

// A size in pixels. A side below 1 holds none.
struct Extent {
    std::int32_t width = 0;
    std::int32_t height = 0;

    [[nodiscard]] constexpr bool empty() const { return width <= 0 || height <= 0; }
    bool operator==(const Extent&) const = default;
};

// A rectangle in pixels, right and bottom exclusive.
struct Rect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    [[nodiscard]] constexpr bool empty() const { return left >= right || top >= bottom; }
    [[nodiscard]] constexpr std::int64_t width() const { return std::int64_t{right} - left; }
    [[nodiscard]] constexpr std::int64_t height() const { return std::int64_t{bottom} - top; }
    // Of a rectangle no longer than 32 bits count, such as one inside an extent.
    [[nodiscard]] constexpr Extent extent() const {
        return {static_cast<std::int32_t>(width()), static_cast<std::int32_t>(height())};
    }
    friend constexpr bool operator==(const Rect& a, const Rect& b) {
        return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
    }
};

// The common part of two rectangles; all zeros when there is none.
[[nodiscard]] constexpr Rect intersect(const Rect& a, const Rect& b) {
    const Rect r{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                 std::min(a.bottom, b.bottom)};
    return r.empty() ? Rect{} : r;
}

[[nodiscard]] constexpr std::int32_t saturate(std::int64_t v) {
    constexpr std::int64_t lo = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t hi = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(v, lo, hi));
}

// v cut toward zero. Held within +-2^62; what is not a number counts as 0.
[[nodiscard]] inline std::int64_t cutToInt64(double v) {
    constexpr double limit = 4611686018427387904.0;
    return std::isnan(v) ? 0 : static_cast<std::int64_t>(std::clamp(v, -limit, limit));
}

// v cut toward zero to 32 bits, saturating; not a number counts as 0.
[[nodiscard]] inline std::int32_t cut(double v) {
    return saturate(cutToInt64(v));
}

// floor(v + 0.5) in 32 bits, saturating; not a number counts as 0.
[[nodiscard]] inline std::int32_t roundHalfUp(double v) {
    return cut(std::floor(v + 0.5));
}

// Scales so near to 1 are drawn without resampling.
[[nodiscard]] constexpr bool isUnitScale(double scale) {
    return scale > 0.9999999999 && scale < 1.0000000001;
}

// The rectangle that an image of the given size covers at (x, y), each edge saturating.
[[nodiscard]] inline Rect placeScaled(std::int32_t x, std::int32_t y, Extent extent, double scale) {
    const auto farEdge = [scale](std::int32_t origin, std::int32_t size) {
        return saturate(std::int64_t{origin} + roundHalfUp(static_cast<double>(size) * scale));
    };
    return Rect{x, y, farEdge(x, extent.width), farEdge(y, extent.height)};
}

} // namespace talx
