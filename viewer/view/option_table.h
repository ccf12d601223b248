// All options: what they are called, what they take and what they do. The command line is read, and the help
// and the errors are written, by this table.
#pragma once

#include "viewer/view/options.h"

namespace talview {

struct Option {
    const wchar_t* name;
    const char* value; // in the help; empty: the option takes none
    // What the value may be; empty: what stands in value, with its bars.
    const char* allowed;
    const char* does;
    void (*set)(Options& options, const std::wstring& value); // throws BadValue
};

// In the order of the help.
[[nodiscard]] const std::vector<Option>& optionTable();

// What an error says of the values that an option allows.
[[nodiscard]] std::string allowedValues(const Option& option);

} // namespace talview
