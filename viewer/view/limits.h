// The limits that a picture's colours have when it is opened, and when a person asks for them.
#pragma once

#include "viewer/view/options.h"
#include "viewer/view/picture.h"

namespace talview {

// All values of the picture's depth.
[[nodiscard]] Limits wholeLimits(const Picture& picture);

// As the options say; in image values, low below high.
[[nodiscard]] Limits openingLimits(const Options& options, const Picture& picture);

} // namespace talview
