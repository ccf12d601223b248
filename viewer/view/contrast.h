// Changing the limits as a window (their distance) about a level (their middle).
//
// Results are whole image values, unless the window is narrower than one. The window stays between 1 and 4
// times the number of values, the level within twice that number beyond either end of the values; limits that
// lie farther already may come back but go no farther. Where no such limits exist as numbers, such as 1 apart
// at 1e300, nothing changes.
#pragma once

#include "viewer/view/geometry.h"

#include <cstdint>

namespace talview {

// Limits dragged from where they were at the drag's start, by pixels of the view counted from there: 256 to
// the right raise the level by one window, as it was at the start; 128 downwards double the window, 128
// upwards halve it. valueCount: of the picture.
[[nodiscard]] Limits dragged(Limits start, double dx, double dy, std::uint32_t valueCount);

// Steps of the keyboard: the level goes by sixteenths of the window, the window by a quarter of doubling,
// both by at least one value. Negative steps lower the level and narrow the window.
[[nodiscard]] Limits withLevelStep(Limits limits, int steps, std::uint32_t valueCount);
[[nodiscard]] Limits withWindowStep(Limits limits, int steps, std::uint32_t valueCount);

} // namespace talview
