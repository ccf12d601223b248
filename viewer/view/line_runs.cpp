// Rasterising.
#include "viewer/view/line_runs.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace talview {
namespace {

Box transposed(const Box& box) {
    return {box.top, box.left, box.bottom, box.right};
}

// Of a line that is no higher than wide.
std::vector<Box> flatRuns(Point from, Point to, long thickness, const Box& clip) {
    if (from.x > to.x) {
        std::swap(from, to);
    }
    const double slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0;
    const auto first = std::max(std::floor(from.x), static_cast<double>(clip.left));
    const auto last = std::min(std::floor(to.x), clip.right - 1.0);

    std::vector<Box> runs;
    for (double x = first; x <= last; ++x) {
        const double middle = std::clamp(x + 0.5, from.x, to.x);
        const double y = std::floor(from.y + (middle - from.x) * slope) - std::floor(thickness / 2.0);
        if (y + static_cast<double>(thickness) <= clip.top || y >= clip.bottom) {
            continue;
        }
        const auto column = static_cast<long>(x);
        const auto row = static_cast<long>(y);
        const Box box{column, std::max(row, clip.top), column + 1, std::min(row + thickness, clip.bottom)};
        Box* const before = runs.empty() ? nullptr : &runs.back();
        if (before && before->right == column && before->top == box.top && before->bottom == box.bottom) {
            ++before->right;
        } else {
            runs.push_back(box);
        }
    }
    return runs;
}

} // namespace

std::vector<Box> lineRuns(Point from, Point to, long thickness, const Box& clip) {
    if (std::abs(to.y - from.y) <= std::abs(to.x - from.x)) {
        return flatRuns(from, to, thickness, clip);
    }
    auto runs = flatRuns({from.y, from.x}, {to.y, to.x}, thickness, transposed(clip));
    std::transform(runs.begin(), runs.end(), runs.begin(), transposed);
    return runs;
}

} // namespace talview
