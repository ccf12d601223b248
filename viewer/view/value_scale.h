// What image values mean, and numbers as people read them.
#pragma once

#include "viewer/view/geometry.h"

#include <string>

namespace talview {

// What a value of the picture means: value * factor + offset, in a unit.
struct ValueScale {
    double factor = 1;
    double offset = 0;
    std::wstring unit;
    [[nodiscard]] double of(double value) const { return value * factor + offset; }
    [[nodiscard]] double valueOf(double number) const { return (number - offset) / factor; }
    // This scale of what another one gives.
    [[nodiscard]] ValueScale after(const ValueScale& first) const {
        return {first.factor * factor, of(first.offset), unit};
    }
};

// A number that the scale gives for a whole value, without the unit: with the same decimals for all, at most
// 9, which tell each from the next; with 7 significant digits where numbers are too large or too small for
// that.
[[nodiscard]] std::wstring numberText(double number, const ValueScale& scale);
// Such as "0.2 to 1.7 mm", with decimals for limits between whole values, too.
[[nodiscard]] std::wstring limitsText(const ValueScale& scale, Limits limits);
// A number of whatever size: 7 significant digits, or all that a whole one has.
[[nodiscard]] std::wstring numberText(double number);

} // namespace talview
