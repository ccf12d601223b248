// The icon that marks a place: a ring with a dot, soft at its edges.
#pragma once

#include <cstdint>
#include <vector>

namespace talview {

constexpr long markerSize =
    25; // width and height in pixels of the view; the place is the middle pixel's middle
constexpr std::uint32_t markerRed = 255;
constexpr std::uint32_t markerGreen = 96;
constexpr std::uint32_t markerBlue = 0;

// Rows of indices. All have the marker's colour, with a transparency of their own; 0 draws nothing.
[[nodiscard]] std::vector<std::uint8_t> markerPels();
// Per cents for the indices. isHard: without anything in between, for a layer that cannot blend.
[[nodiscard]] std::vector<std::uint8_t> markerTransparencies(bool isHard);

} // namespace talview
