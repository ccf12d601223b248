// Markers as CSV: a line x,y and then one line for each marker, in image pixels.
#pragma once

#include "viewer/view/geometry.h"

#include <string>
#include <string_view>
#include <vector>

namespace talview {

// Blanks, empty lines, a byte order mark and lines that end as Windows' do are no matter. Throws Failure that
// names the first bad line.
[[nodiscard]] std::vector<Point> parseMarkers(std::string_view text);
// The same numbers are read again, in every language of the system.
[[nodiscard]] std::string formatMarkers(const std::vector<Point>& markers);

} // namespace talview
