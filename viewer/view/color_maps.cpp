// The colours.
#include "viewer/view/color_maps.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

std::uint32_t colorAt(const std::vector<ColorStop>& stops, double at) {
    const auto next =
        std::find_if(stops.begin() + 1, stops.end() - 1, [&](auto& stop) { return at < stop.at; });
    const ColorStop& from = *(next - 1);
    const double share = (at - from.at) / (next->at - from.at);
    std::uint32_t color = 0;
    for (int shift : {16, 8, 0}) {
        const double first = from.color >> shift & 0xFF;
        const double last = next->color >> shift & 0xFF;
        color |= static_cast<std::uint32_t>(std::lround(first + (last - first) * share)) << shift;
    }
    return color;
}

} // namespace

const std::vector<ColorMap>& colorMaps() {
    static const std::vector<ColorMap> maps = {
        {L"grey", {{0, 0x000000}, {1, 0xFFFFFF}}},
        {L"invert", {{0, 0xFFFFFF}, {1, 0x000000}}},
        {L"heat", {{0, 0x000000}, {0.4, 0xFF0000}, {0.8, 0xFFFF00}, {1, 0xFFFFFF}}},
        {L"ice", {{0, 0x000000}, {0.4, 0x0000FF}, {0.8, 0x00FFFF}, {1, 0xFFFFFF}}},
        {L"rainbow", {{0, 0x0000FF}, {0.25, 0x00FFFF}, {0.5, 0x00FF00}, {0.75, 0xFFFF00}, {1, 0xFF0000}}},
        {L"terrain",
         {{0, 0x10306C}, {0.3, 0x6CB4E0}, {0.35, 0xE0D090}, {0.5, 0x3C8C3C}, {0.8, 0x70502C}, {1, 0xFFFFFF}}},
    };
    return maps;
}

std::vector<std::uint32_t> colorTable(const ColorMap& map, std::uint32_t size, double low, double high) {
    std::vector<std::uint32_t> table(size);
    for (std::uint32_t value = 0; value < size; ++value) {
        table[value] = colorAt(map.stops, std::clamp((value - low) / (high - low), 0.0, 1.0));
    }
    return table;
}

} // namespace talview
