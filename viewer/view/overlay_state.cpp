// Where overlays lie.
#include "viewer/view/overlay_state.h"

#include <algorithm>
#include <cmath>

namespace talview {

Box boxOfLine(const Placement& placement, const Line& line) {
    const Point from = placement.toView({line.from.x + 0.5, line.from.y + 0.5});
    const Point to = placement.toView({line.to.x + 0.5, line.to.y + 0.5});
    const auto pixel = [](double place) {
        return std::lround(std::floor(std::clamp(place, -2e9, 2e9)));
    };
    return {pixel(std::min(from.x, to.x)) - lineEndSize, pixel(std::min(from.y, to.y)) - lineEndSize,
            pixel(std::max(from.x, to.x)) + lineEndSize + 1, pixel(std::max(from.y, to.y)) + lineEndSize + 1};
}

} // namespace talview
