// How the viewer's parts tell that something went wrong: exceptions that carry one line of UTF-8 text.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace talview {

using HRESULT = long; // as Windows has it, without which the command line is read, too

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

// Throws a Failure for a failure code: what was done, then the description that the failing object left with
// the thread (IErrorInfo), or else the system's own text for the code.
void check(HRESULT hr, std::string_view what);

// The same for the creation of an object of a class that a registered DLL serves: the text says what to do.
void checkCreated(HRESULT hr, const std::string& dll);

} // namespace talview
