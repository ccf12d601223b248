// How many decimals.
#include "viewer/view/value_scale.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <iterator>

namespace talview {
namespace {

constexpr int mostDecimals = 9;
constexpr double longest = 1e12; // larger numbers are not written with all their digits

// By which a number misses the nearest one of so many decimals.
double missed(double number, int decimals) {
    const double power = std::pow(10, decimals);
    return std::abs(std::round(number * power) / power - number);
}

// Those that factor and offset have, or two more than tell values apart, such as of a third.
int decimalsOf(const ValueScale& scale) {
    const double size = std::abs(scale.factor);
    int decimals = static_cast<int>(std::clamp(std::ceil(-std::log10(size) - 1e-9), 0.0, 99.0));
    const auto isExact = [&] {
        return missed(scale.factor, decimals) <= size * 1e-6 && missed(scale.offset, decimals) <= size * 1e-3;
    };
    for (const int most = decimals + 2; decimals < std::min(most, mostDecimals) && !isExact();) {
        ++decimals;
    }
    return decimals;
}

std::wstring fixedText(double number, int decimals) {
    if (decimals > mostDecimals || !(std::abs(number) < longest)) {
        return numberText(number);
    }
    wchar_t text[32];
    const bool isNothing = std::abs(number) < 0.5 * std::pow(10, -decimals); // not "-0.00"
    std::swprintf(text, std::size(text), L"%.*f", decimals, isNothing ? 0 : number);
    return text;
}

} // namespace

std::wstring numberText(double number, const ValueScale& scale) {
    return fixedText(number, decimalsOf(scale));
}

std::wstring limitsText(const ValueScale& scale, Limits limits) {
    const double low = scale.of(limits.low);
    const double high = scale.of(limits.high);
    const double share = std::abs(high - low) / 1000;
    int decimals = decimalsOf(scale);
    while (decimals < mostDecimals && std::max(missed(low, decimals), missed(high, decimals)) > share) {
        ++decimals;
    }
    return fixedText(low, decimals) + L" to " + fixedText(high, decimals) +
           (scale.unit.empty() ? L"" : L" ") + scale.unit;
}

std::wstring numberText(double number) {
    const bool isWhole = number == std::floor(number) && std::abs(number) < 1e10;
    wchar_t text[32];
    std::swprintf(text, std::size(text), isWhole ? L"%.0f" : L"%.7g", number);
    return text;
}

} // namespace talview
