// The path through OKLab.
#include "viewer/view/even_map.h"

#include "viewer/view/light.h"

#include <cmath>
#include <numbers>

namespace talview {
namespace {

// The transform of Björn Ottosson, "A perceptual color space for image processing", 2020.
std::uint32_t fromOklab(double lightness, double a, double b) {
    const auto cube = [](double root) {
        return root * root * root;
    };
    const double l = cube(lightness + 0.3963377774 * a + 0.2158037573 * b);
    const double m = cube(lightness - 0.1055613458 * a - 0.0638541728 * b);
    const double s = cube(lightness - 0.0894841775 * a - 1.2914855480 * b);
    const double red = 4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s;
    const double green = -1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s;
    const double blue = -0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s;
    return std::uint32_t{levelOf(red)} << 16 | levelOf(green) << 8 | levelOf(blue);
}

} // namespace

std::vector<ColorStop> evenStops() {
    constexpr int steps = 64;
    std::vector<ColorStop> stops;
    for (int i = 0; i <= steps; ++i) {
        const double at = static_cast<double>(i) / steps;
        const double lightness = std::lerp(0.25, 0.93, at);
        const double hue = std::lerp(285.0, 105.0, at) * std::numbers::pi / 180;
        // Vivid at both ends; between them sRGB has less room.
        const double chroma = 0.085 + 0.3 * (at - 0.4) * (at - 0.4);
        stops.push_back({at, fromOklab(lightness, chroma * std::cos(hue), chroma * std::sin(hue))});
    }
    return stops;
}

} // namespace talview
