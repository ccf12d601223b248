// Numbers for the marks of an axis: multiples of 1, 2 or 5 times a power of 10.
#pragma once

#include <string>
#include <vector>

namespace talview {

struct Ticks {
    double step = 0;
    std::vector<double> at; // ascending
};

// The finest marks from low to high of which there are at most so many. None where low is not below high, and
// where numbers are so large that they cannot tell one mark from the next.
[[nodiscard]] Ticks ticksBetween(double low, double high, int most);

// A mark's number with the digits that tell it from its neighbours.
[[nodiscard]] std::wstring tickText(double number, double step);

} // namespace talview
