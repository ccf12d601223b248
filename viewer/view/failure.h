// What the viewer's own parts throw beside talxrend::Failure: exceptions that carry one line of UTF-8 text.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace talview {

// The work cannot be done.
class Failure : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

// The command line cannot be understood.
class UsageError : public std::runtime_error {
public:
    using runtime_error::runtime_error;
};

// Between the wide characters of the system's calls, of 16 or 32 bits each, and UTF-8. What stands for no
// character becomes U+FFFD.
[[nodiscard]] std::string utf8(std::wstring_view text);
[[nodiscard]] std::wstring wide(std::string_view text);

// Says what to do when an object of a class that a DLL serves cannot be created.
[[nodiscard]] std::string notRegistered(const std::string& dll);

} // namespace talview
