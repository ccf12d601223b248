// Where the pixels of a magnified image begin and end in the view, to the view pixel, when the engine draws
// it by the nearest method.
#pragma once

#include <cstdint>
#include <vector>

namespace talview {

// One direction: columns with left edges and widths, or rows with top edges and heights. All positions are in
// view pixels.
class PixelAxis {
public:
    // An image of size pixels (at least 1) whose first begins at begin, at a scale above 1.
    PixelAxis(long begin, long size, double scale);

    // The pixel that is seen at a position, or would be if the image went on with its first and last ones.
    [[nodiscard]] long pixelAt(long position) const;
    // The first position that shows a pixel; of one beyond the last, the image's end.
    [[nodiscard]] long beginOf(long pixel) const;
    [[nodiscard]] long end() const { return static_cast<long>(begin_ + extent_); }

    // Of the positions from first to last (exclusive), those where a pixel begins.
    [[nodiscard]] std::vector<long> lines(long first, long last) const;

private:
    [[nodiscard]] std::int64_t indexAt(std::int64_t offset) const;

    std::int64_t begin_;
    std::int64_t size_;
    std::int64_t extent_; // of the scaled image
    std::int64_t whole_;  // the scale if it is a whole number, or as good as one; otherwise 0
    double scale_;
};

} // namespace talview
