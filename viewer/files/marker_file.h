// Markers in a CSV file, by default one beside the picture.
#pragma once

#include "viewer/view/geometry.h"

#include <string>
#include <vector>

namespace talview {

// For a picture's file, such as part.png.markers.csv.
[[nodiscard]] std::wstring markersBeside(const std::wstring& picture);

// Both throw Failure or talxrend::Failure that names the file, and the line if one is bad.
[[nodiscard]] std::vector<Point> readMarkers(const std::wstring& path);
void writeMarkers(const std::wstring& path, const std::vector<Point>& markers);

} // namespace talview
