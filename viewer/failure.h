// What the viewer's own parts throw beside talxrend::Failure: exceptions that carry one line of UTF-8 text.
// Nothing of Windows is needed for them.
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

[[nodiscard]] std::string utf8(std::wstring_view text);

// Says what to do when an object of a class that a DLL serves cannot be created.
[[nodiscard]] std::string notRegistered(const std::string& dll);

} // namespace talview
