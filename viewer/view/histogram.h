// How often the values of a picture occur.
#pragma once

#include "viewer/view/picture.h"

#include <vector>

namespace talview {

// Of each value that a pel can have, how many visible pixels have it: one list for grey and range pictures,
// three (red, green, blue) for colour.
using ValueCounts = std::vector<std::vector<std::uint64_t>>;

// Goes through the picture once: about 0.1 s for 100 million pixels, so it is to be called once for each
// picture. What the map and the limits are does not matter to it.
[[nodiscard]] ValueCounts countValues(const Picture& picture);

// Counts of runs of values of the same length (of the last, a part may lie beyond the last value that
// counts), so that a flat picture gives a flat histogram.
struct Histogram {
    std::uint32_t first = 0;                      // value, of the first bin
    std::uint32_t perBin = 1;                     // values
    std::vector<std::vector<std::uint64_t>> bins; // of each channel; at most 256
    std::uint64_t most = 0;                       // in any bin
};

// Of the values from limits.low to limits.high; empty if no value lies there.
[[nodiscard]] Histogram histogram(const ValueCounts& counts, Limits limits);

} // namespace talview
