// The marker's pixels.
#include "viewer/scene/marker.h"

#include "viewer/files/image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace talview {
namespace {

// Index i is the marker's colour with a transparency of 100 - i per cent; 0 draws nothing. The most opaque is
// 99, for on a palettised layer an opaque pixel would show palette entry 0 instead of its colour.
constexpr int mostOpaque = 99;
constexpr COLORREF color = RGB(255, 96, 0);

std::vector<std::uint8_t> transparencies(bool palettised) {
    std::vector<std::uint8_t> table(256, 100);
    for (int index = palettised ? 50 : 0; index <= mostOpaque; ++index) {
        table[index] = static_cast<std::uint8_t>(100 - index);
    }
    return table;
}

// How much a ring (or, with radius 0, a dot) covers at a distance from the middle: full within its half
// width, then fading over three pixels.
double coverage(double distance, double radius, double halfWidth) {
    return std::clamp(1 - (std::abs(distance - radius) - halfWidth) / 3, 0.0, 1.0);
}

} // namespace

Marker::Marker(bool palettised)
    : colors_(std::vector<std::uint32_t>(256, color)), transparencies_(talview::transparencies(palettised)) {
    Picture picture;
    picture.width = size;
    picture.height = size;
    picture.bytes[0] = Block<std::uint8_t>(static_cast<std::size_t>(size) * size);
    for (long y = 0; y < size; ++y) {
        for (long x = 0; x < size; ++x) {
            const double distance = std::hypot(x - size / 2, y - size / 2);
            const double share = std::max(coverage(distance, 9, 0.75), coverage(distance, 0, 1));
            picture.bytes[0][picture.at(x, y)] = static_cast<std::uint8_t>(std::lround(share * mostOpaque));
        }
    }
    const Image image(std::move(picture));
    talxrend::check(image.object()->QueryInterface(IID_PPV_ARGS(&icon_)), "the marker is not an icon");
}

} // namespace talview
