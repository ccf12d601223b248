// Named colour maps for grey and range images.
#pragma once

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

// 0x00RRGGBB for each of size image values; values up to low get the first colour, from high on the last.
[[nodiscard]] std::vector<std::uint32_t> colorTable(const ColorMap& map, std::uint32_t size, double low,
                                                    double high);

} // namespace talview
