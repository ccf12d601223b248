// The marker's pixels.
#include "viewer/view/marker_shape.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace talview {
namespace {

// Index i has a transparency of 100 - i per cent. The most opaque is 99, for on a palettised layer an opaque
// pixel would show palette entry 0 instead of its colour.
constexpr int mostOpaque = 99;

// How much a ring (or, with radius 0, a dot) covers at a distance from the middle: full within its half
// width, then fading over three pixels.
double coverage(double distance, double radius, double halfWidth) {
    return std::clamp(1 - (std::abs(distance - radius) - halfWidth) / 3, 0.0, 1.0);
}

} // namespace

std::vector<std::uint8_t> markerPels() {
    std::vector<std::uint8_t> pels;
    for (long y = 0; y < markerSize; ++y) {
        for (long x = 0; x < markerSize; ++x) {
            const double distance = std::hypot(x - markerSize / 2, y - markerSize / 2);
            const double share = std::max(coverage(distance, 9, 0.75), coverage(distance, 0, 1));
            pels.push_back(static_cast<std::uint8_t>(std::lround(share * mostOpaque)));
        }
    }
    return pels;
}

std::vector<std::uint8_t> markerTransparencies(bool isHard) {
    std::vector<std::uint8_t> table(256, 100);
    for (int index = isHard ? 50 : 0; index <= mostOpaque; ++index) {
        table[index] = static_cast<std::uint8_t>(100 - index);
    }
    return table;
}

} // namespace talview
