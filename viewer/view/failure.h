// What the viewer's own parts throw beside talxrend::Failure: exceptions that carry one line of UTF-8 text.
#pragma once

#include "viewer/view/text.h"

#include <stdexcept>
#include <string>

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

// Says what to do when an object of a class that a DLL serves cannot be created.
[[nodiscard]] inline std::string notRegistered(const std::string& dll) {
    return dll + " is not registered or cannot be loaded; run: regsvr32 " + dll;
}

} // namespace talview
