// Named colour maps for grey and range images.
#pragma once

#include "viewer/view/geometry.h"

#include <cstdint>
#include <vector>

namespace talview {

// A colour (0x00RRGGBB) at a place between 0 and 1.
struct ColorStop {
    double at;
    std::uint32_t color;
};

// Colours between two stops are mixed in proportion; the first stop is at 0, the last at 1.
struct ColorMap {
    const wchar_t* name;
    std::vector<ColorStop> stops;
};

// All maps; the first is "grey".
[[nodiscard]] const std::vector<ColorMap>& colorMaps();

// Whether values that the map cannot tell from others get colours of their own: those below the low limit and
// 0, the least that there is, lowFlag; those above the high limit and the largest of the depth highFlag.
enum class Flags { off, on };
constexpr std::uint32_t lowFlag = 0x0000FF;
constexpr std::uint32_t highFlag = 0xFF0000;

// 0x00RRGGBB for each of size image values; values up to limits.low, which is below limits.high, get the
// first colour, from limits.high on the last.
[[nodiscard]] std::vector<std::uint32_t> colorTable(const ColorMap& map, std::uint32_t size, Limits limits,
                                                    Flags flags = Flags::off);
// What such a table has for one value.
[[nodiscard]] std::uint32_t colorOf(std::uint32_t value, const ColorMap& map, std::uint32_t size,
                                    Limits limits, Flags flags = Flags::off);

// The colour at a place between 0 and 1.
[[nodiscard]] std::uint32_t colorAt(const ColorMap& map, double at);

} // namespace talview
