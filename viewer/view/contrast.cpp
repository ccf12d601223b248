// Window and level.
#include "viewer/view/contrast.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

struct Contrast {
    explicit Contrast(Limits limits)
        : window(limits.high - limits.low), level(limits.low + (limits.high - limits.low) / 2) {}
    double window;
    double level;
};

Limits limitsOf(Contrast wanted, Limits before, double valueCount) {
    const Contrast start(before);
    const double window =
        std::clamp(wanted.window, std::min(1.0, start.window), std::max(4 * valueCount, start.window));
    const double level = std::clamp(wanted.level, std::min(-2 * valueCount, start.level),
                                    std::max(3 * valueCount, start.level));
    Limits limits{level - window / 2, level + window / 2};
    if (window >= 1) {
        limits.low = std::round(level - std::round(window) / 2);
        limits.high = limits.low + std::round(window);
    }
    const bool isGood = std::isfinite(limits.low) && std::isfinite(limits.high) && limits.low < limits.high;
    return isGood ? limits : before;
}

// At least one value, where the window has one.
double atLeastOne(double step, const Contrast& contrast) {
    return contrast.window >= 1 ? std::max(step, 1.0) : step;
}

} // namespace

Limits dragged(Limits start, double dx, double dy, std::uint32_t valueCount) {
    if (dx == 0 && dy == 0) {
        return start;
    }
    Contrast contrast(start);
    contrast.level += dx / 256 * contrast.window;
    contrast.window *= std::exp2(dy / 128);
    return limitsOf(contrast, start, valueCount);
}

Limits withLevelStep(Limits limits, int steps, std::uint32_t valueCount) {
    Contrast contrast(limits);
    contrast.level += steps * atLeastOne(contrast.window / 16, contrast);
    return limitsOf(contrast, limits, valueCount);
}

Limits withWindowStep(Limits limits, int steps, std::uint32_t valueCount) {
    Contrast contrast(limits);
    const double change = contrast.window * std::exp2(steps / 4.0) - contrast.window;
    contrast.window += std::copysign(steps == 0 ? 0 : atLeastOne(std::abs(change), contrast), change);
    return limitsOf(contrast, limits, valueCount);
}

} // namespace talview
