// Where the pixels of an image lie in the view, to the view pixel, as the engine draws it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace talview {

// One direction: columns with left edges and widths, or rows with top edges and heights. All positions are in
// view pixels.
class PixelAxis {
public:
    // An image of size pixels (at least 1) whose first begins at begin. isCentre: by the centre-aligned
    // method instead of the nearest.
    PixelAxis(long begin, long size, double scale, bool isCentre = false);

    // The pixel that is seen at a position, or would be if the image went on with its first and last ones.
    [[nodiscard]] long pixelAt(long position) const;
    // At a scale above 1: the first position that shows a pixel; of one that none shows, the image's end.
    [[nodiscard]] long beginOf(long pixel) const;
    [[nodiscard]] long end() const { return at(extent_); }

    // Of the positions from first to last (exclusive), those where a pixel begins.
    [[nodiscard]] std::vector<long> lines(long first, long last) const;

private:
    // Of an offset, within 32 bits.
    [[nodiscard]] long at(std::int64_t offset) const {
        return static_cast<long>(std::clamp<std::int64_t>(begin_ + offset, INT32_MIN, INT32_MAX));
    }
    [[nodiscard]] std::int64_t indexAt(std::int64_t offset) const;

    std::int64_t begin_;
    std::int64_t size_;
    std::int64_t extent_; // of the scaled image
    // The offsets whose pixels are sampled; those beside show the same as the first and the last of them.
    std::int64_t first_ = 0;
    std::int64_t last_;
    std::int64_t whole_ = 0; // the scale if it is a whole number, or as good as one; otherwise 0
    double scale_;
    // Of the centre-aligned method: what is added to image positions, and from which offset it counts, there
    // in 65536ths of an image pixel, in which steps.
    double shift_ = 0;
    std::int64_t counted_ = 0;
    std::int64_t start_ = 0;
    std::int64_t step_ = 0;
};

} // namespace talview
