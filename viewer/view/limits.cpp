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
    constexpr double most = 1e12;    // far beyond all values
    constexpr double least = 1e-100; // between the limits: colours for each value are worked out still
    const auto value = [&](double shown) {
        return std::clamp((shown - picture.scale.offset) / picture.scale.factor, -most, most);
    };
    const Limits& asked = options.limits.values;
    const auto [low, end] = std::minmax({value(asked.low), value(asked.high)});
    const double high = std::max({end, std::nextafter(low, 2 * most), low + least});
    // A scale may be such that nothing asked for is a value.
    return low < high ? Limits{low, high} : dataLimits(picture);
}

} // namespace talview
