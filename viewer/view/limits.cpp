// From the options to image values.
#include "viewer/view/limits.h"

#include <algorithm>
#include <cmath>

namespace talview {

Limits wholeLimits(const Picture& picture) {
    return {0, picture.valueCount() - 1.0};
}

Limits openingLimits(const Options& options, const Picture& picture) {
    switch (options.limits.kind) {
    case AskedLimits::byKind:
        return picture.kind == PictureKind::grey8 ? wholeLimits(picture) : dataLimits(picture);
    case AskedLimits::data:
        return dataLimits(picture);
    case AskedLimits::full:
        return wholeLimits(picture);
    case AskedLimits::fixed:
        break;
    }
    constexpr double most = 1e12; // far beyond all values
    const auto value = [&](double shown) {
        return std::clamp((shown - picture.scale.offset) / picture.scale.factor, -most, most);
    };
    const Limits& asked = options.limits.values;
    const auto [low, high] = std::minmax({value(asked.low), value(asked.high)});
    return {low, std::max(high, std::nextafter(low, 2 * most))};
}

} // namespace talview
