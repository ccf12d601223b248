// A colour map whose lightness rises evenly, so that equal steps of values look equal.
#pragma once

#include "viewer/view/color_maps.h"

namespace talview {

// From dark blue over green to light yellow: also those who cannot tell red from green see an order, and a
// grey print keeps it.
[[nodiscard]] std::vector<ColorStop> evenStops();

} // namespace talview
