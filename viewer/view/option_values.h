// Values of options out of their texts. Each throws BadValue for what it does not understand.
#pragma once

#include "viewer/view/failure.h"
#include "viewer/view/geometry.h"
#include "viewer/view/numbers.h"
#include "viewer/view/picture.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwctype>

namespace talview {

// Whoever catches it knows the option and the value.
struct BadValue {};

using Text = const std::wstring&;

template <class Value>
struct Choice {
    std::wstring_view name;
    Value value;
};

template <class Value, std::size_t count>
Value choose(Text text, const Choice<Value> (&choices)[count]) {
    const auto* found = std::find_if(choices, choices + count, [&](auto& each) { return each.name == text; });
    return found == choices + count ? throw BadValue() : found->value;
}

inline double takeOne(std::string_view& text) {
    const auto number = takeNumber(text);
    return number ? *number : throw BadValue();
}

// As many numbers as the array has, with separators between them.
template <std::size_t count>
std::array<double, count> takeNumbers(std::string_view& text, char separator = ',') {
    std::array<double, count> numbers;
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) {
            text.empty() || text.front() != separator ? throw BadValue() : text.remove_prefix(1);
        }
        numbers[i] = takeOne(text);
    }
    return numbers;
}

template <std::size_t count>
std::array<double, count> parseNumbers(Text value, char separator = ',') {
    const std::string text = utf8(value);
    std::string_view rest = text;
    const auto numbers = takeNumbers<count>(rest, separator);
    return rest.empty() ? numbers : throw BadValue();
}

inline double parseNumber(Text value, double low, double high) {
    const double number = parseNumbers<1>(value)[0];
    return number < low || number > high ? throw BadValue() : number;
}

inline Point parsePoint(Text value) {
    const auto [x, y] = parseNumbers<2>(value);
    return {x, y};
}

inline long whole(double number, double low, double high) {
    return number < low || number > high || number != std::floor(number) ? throw BadValue()
                                                                         : static_cast<long>(number);
}

// FACTOR,OFFSET[,UNIT], so small and so large that sums with values of pictures stay numbers.
inline ValueScale parseHeights(Text value) {
    constexpr double most = 1e30;
    const std::string text = utf8(value);
    std::string_view rest = text;
    const auto [factor, offset] = takeNumbers<2>(rest);
    const bool isGood = std::abs(factor) >= 1 / most && std::abs(factor) <= most && std::abs(offset) <= most;
    if (!isGood || (!rest.empty() && rest.front() != ',')) {
        throw BadValue();
    }
    return {factor, offset, rest.empty() ? L"" : wide(rest.substr(1))};
}

inline std::uint32_t parseColor(Text value) {
    const bool isHex = std::all_of(value.begin(), value.end(), [](wint_t c) { return iswxdigit(c) != 0; });
    return value.size() == 6 && isHex ? std::stoul(value, nullptr, 16) : throw BadValue();
}

inline Text parseFile(Text value) {
    return value.empty() ? throw BadValue() : value;
}

} // namespace talview
