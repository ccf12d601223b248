// The colours.
#include "viewer/view/color_maps.h"

#include "viewer/view/even_map.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace talview {
namespace {

double channel(std::uint32_t color, int shift) {
    return color >> shift & 0xFF;
}

// What the map shows from one stop to the next: each channel, by how much it grows with what is looked up,
// and half a step more, so that cutting rounds.
class Segment {
public:
    Segment(const ColorStop& first, const ColorStop& last, double from, double to) : from_(from) {
        for (int i = 0; i < 3; ++i) {
            base_[i] = channel(first.color, 8 * i) + 0.5;
            slope_[i] = (channel(last.color, 8 * i) - channel(first.color, 8 * i)) / (to - from);
        }
    }

    [[nodiscard]] std::uint32_t operator()(double at) const {
        const auto level = [&](int i) {
            return static_cast<std::int32_t>(base_[i] + slope_[i] * (at - from_));
        };
        return level(2) << 16 | level(1) << 8 | level(0);
    }

private:
    double from_;
    std::array<double, 3> base_{}; // blue, green, red
    std::array<double, 3> slope_{};
};

} // namespace

const std::vector<ColorMap>& colorMaps() {
    static const std::vector<ColorMap> maps = {
        {L"grey", {{0, 0x000000}, {1, 0xFFFFFF}}},
        {L"invert", {{0, 0xFFFFFF}, {1, 0x000000}}},
        {L"heat", {{0, 0x000000}, {0.4, 0xFF0000}, {0.8, 0xFFFF00}, {1, 0xFFFFFF}}},
        {L"ice", {{0, 0x000000}, {0.4, 0x0000FF}, {0.8, 0x00FFFF}, {1, 0xFFFFFF}}},
        {L"even", evenStops()},
        {L"rainbow", {{0, 0x0000FF}, {0.25, 0x00FFFF}, {0.5, 0x00FF00}, {0.75, 0xFFFF00}, {1, 0xFF0000}}},
        {L"terrain",
         {{0, 0x10306C}, {0.3, 0x6CB4E0}, {0.35, 0xE0D090}, {0.5, 0x3C8C3C}, {0.8, 0x70502C}, {1, 0xFFFFFF}}},
    };
    return maps;
}

// A new table is wanted at every step of a person's who drags the limits: so the values are gone through by
// the stops between which they lie, and none of them is searched for.
std::vector<std::uint32_t> colorTable(const ColorMap& map, std::uint32_t size, Limits limits, Flags flags) {
    std::vector<std::uint32_t> table(size);
    // The first value that lies not below a place of the map.
    const auto firstFrom = [&](double bound) {
        return static_cast<std::uint32_t>(std::clamp(std::ceil(bound), 0.0, static_cast<double>(size)));
    };
    const std::uint32_t begin = firstFrom(limits.low);
    const std::uint32_t end = firstFrom(limits.high);
    std::fill(table.begin(), table.begin() + begin, map.stops.front().color);
    std::fill(table.begin() + end, table.end(), map.stops.back().color);

    double from = limits.low;
    std::uint32_t value = begin;
    for (auto stop = map.stops.begin() + 1; stop != map.stops.end(); ++stop) {
        const double to = std::lerp(limits.low, limits.high, stop->at);
        const Segment segment(stop[-1], *stop, from, to);
        for (const std::uint32_t next = std::max(value, firstFrom(to)); value < next; ++value) {
            table[value] = segment(static_cast<std::int32_t>(value));
        }
        from = to;
    }

    if (flags == Flags::on && size > 0) {
        const auto low = table.begin() + std::max(begin, 1u);
        const double above = std::floor(limits.high) + 1;
        const auto high = table.begin() + std::min(firstFrom(above), size - 1);
        std::fill(table.begin(), low, lowFlag);
        std::fill(high, table.end(), highFlag);
    }
    return table;
}

std::uint32_t colorOf(std::uint32_t value, const ColorMap& map, std::uint32_t size, Limits limits,
                      Flags flags) {
    if (flags == Flags::on && (value > limits.high || value == size - 1)) {
        return highFlag;
    }
    if (flags == Flags::on && (value < limits.low || value == 0)) {
        return lowFlag;
    }
    return colorAt(map, (value - limits.low) / (limits.high - limits.low));
}

std::uint32_t colorAt(const ColorMap& map, double at) {
    const auto next =
        std::find_if(map.stops.begin() + 1, map.stops.end() - 1, [&](auto& stop) { return at < stop.at; });
    return Segment(next[-1], *next, next[-1].at, next->at)(std::clamp(at, 0.0, 1.0));
}

} // namespace talview
