// Light as the screen shows it.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace talview {

// The level of a channel of 8 bits for light between 0 and 1, or at these ends for what lies beyond: the
// transfer curve of sRGB.
[[nodiscard]] inline std::uint8_t levelOf(double light) {
    const double share = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    return static_cast<std::uint8_t>(std::lround(255 * std::clamp(share, 0.0, 1.0)));
}

} // namespace talview
