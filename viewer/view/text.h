// Between the wide characters of the system's calls, of 16 or 32 bits each, and UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace talview {

// What stands for no character becomes U+FFFD.
[[nodiscard]] std::string utf8(std::wstring_view text);
[[nodiscard]] std::wstring wide(std::string_view text);

} // namespace talview
