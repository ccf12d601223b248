// A straight line as rectangles of pixels.
#pragma once

#include "viewer/view/geometry.h"

#include <vector>

namespace talview {

// Those parts inside clip of a line from one point to another, thickness pixels thick across its longer
// direction: a point belongs to the pixel that it lies in. Which pixels are covered does not depend on clip.
[[nodiscard]] std::vector<Box> lineRuns(Point from, Point to, long thickness, const Box& clip);

} // namespace talview
