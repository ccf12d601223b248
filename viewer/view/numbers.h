// Numbers in texts that programs read: a point in front of decimals, whatever the system's language.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string>
#include <string_view>

namespace talview {

// Takes a finite number from the front of text; none, and text as it was, if it does not begin with one.
[[nodiscard]] inline std::optional<double> takeNumber(std::string_view& text) {
    const std::size_t sign = text.size() > 1 && text[0] == '+' && text[1] != '-' ? 1 : 0;
    double number = 0;
    const auto [end, error] = std::from_chars(text.data() + sign, text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number)) {
        return std::nullopt;
    }
    text.remove_prefix(end - text.data());
    return number;
}

// The shortest text that reads back as the same number.
[[nodiscard]] inline std::string plainNumber(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

} // namespace talview
