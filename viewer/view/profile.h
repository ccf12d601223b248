// The values of a picture along a line.
#pragma once

#include "viewer/view/geometry.h"
#include "viewer/view/picture.h"

#include <vector>

namespace talview {

// Of a line whose ends are image positions, whole numbers being the middles of pixels: a sample for each
// pixel of the line's longer side, both ends included, of the pixel that lies there.
struct Profile {
    double start = 0; // of the first sample inside the picture: distance from the line's begin, in pixels
    double step = 0;  // distance from one sample to the next
    // One, or red, green and blue: values as PixelValues has them; of hidden ones no number (NaN). Empty if
    // the line does not touch the picture, or is longer than 1e9 pixels.
    std::vector<std::vector<double>> curves;

    [[nodiscard]] std::size_t size() const { return curves.empty() ? 0 : curves.front().size(); }
    // The smallest and the largest number of all curves; both 0 if there is none.
    [[nodiscard]] Limits extremes() const;
};

[[nodiscard]] Profile profileAlong(const Picture& picture, const Line& line);

// What a curve covers in one column of a plot: from low to high; nothing (NaN) in a gap.
struct ColumnRange {
    double low;
    double high;
};

// A curve drawn over so many columns, its first sample in the middle of the first column and its last in that
// of the last one: straight from sample to sample, columns joined to their neighbours.
[[nodiscard]] std::vector<ColumnRange> columnRanges(const std::vector<double>& curve, int columns);

} // namespace talview
