// Lines and blanks of texts that programs read.
#pragma once

#include <algorithm>
#include <string_view>

namespace talview {

[[nodiscard]] inline std::string_view withoutBlanks(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
    return text;
}

// Takes the first line from the front of text, without the blanks around it and whatever ends it.
[[nodiscard]] inline std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return withoutBlanks(line);
}

} // namespace talview
