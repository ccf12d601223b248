// Steps of an axis.
#include "viewer/view/ticks.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <iterator>

namespace talview {

Ticks ticksBetween(double low, double high, int most) {
    const double span = high - low;
    const double largest = std::max(std::abs(low), std::abs(high));
    // Steps are at least a part of this; so much smaller than the numbers themselves they are lost in them.
    const double least = span / std::max(most, 1);
    if (!(span > 0) || !std::isfinite(span) || least < 1e-290 || least < largest * 1e-13 || most < 1) {
        return {};
    }
    for (int power = static_cast<int>(std::floor(std::log10(least)));; ++power) {
        // Dividing by a power of 10 gives the double that is nearest to the decimal number; multiplying with
        // its inverse does not.
        const double scale = std::pow(10, std::abs(power));
        for (const double factor : {1.0, 2.0, 5.0}) {
            const auto multiple = [&](double index) {
                return power < 0 ? index * factor / scale : index * factor * scale;
            };
            const double step = multiple(1);
            constexpr double share = 1e-9; // of a step, by which an end may miss its mark
            const double first = std::ceil(low / step - share);
            const double last = std::floor(high / step + share);
            if (last - first < most) {
                Ticks ticks{step, {}};
                for (double index = first; index <= last; ++index) {
                    ticks.at.push_back(multiple(index) + 0.0); // no -0
                }
                return ticks;
            }
        }
    }
}

std::wstring tickText(double number, double step) {
    wchar_t text[64];
    // Of the first digit that tells marks apart: 1 for tens, -1 for tenths.
    const auto power = [](double value) {
        return static_cast<int>(std::floor(std::log10(value) + 1e-9));
    };
    const int last = power(step);
    if (last >= -6 && std::abs(number) < 1e9) {
        std::swprintf(text, std::size(text), L"%.*f", std::max(0, -last), number);
    } else {
        const int first = number == 0 ? last : power(std::abs(number));
        std::swprintf(text, std::size(text), L"%.*g", std::max(first - last, 0) + 1, number);
    }
    return text;
}

} // namespace talview
