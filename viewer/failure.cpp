// Texts of failures.
#include "viewer/failure.h"

#include <talxrend.hpp>

namespace talview {

std::string utf8(std::wstring_view text) {
    return talxrend::utf8(text);
}

std::string notRegistered(const std::string& dll) {
    return dll + " is not registered or cannot be loaded; run: regsvr32 " + dll;
}

} // namespace talview
