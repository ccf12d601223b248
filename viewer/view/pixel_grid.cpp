// The arithmetic of the engines' nearest method: a scale within 1e-10 of a whole number makes blocks of that
// many pixels, any other one cuts the offset times the scale's inverse.
#include "viewer/view/pixel_grid.h"

#include <algorithm>
#include <cmath>

namespace talview {

PixelAxis::PixelAxis(long begin, long size, double scale)
    : begin_(begin), size_(size),
      extent_(static_cast<std::int64_t>(std::floor(static_cast<double>(size) * scale + 0.5))), whole_(0),
      scale_(scale) {
    const double nearest = std::round(scale);
    if (std::abs(scale - nearest) < 1e-10) {
        whole_ = static_cast<std::int64_t>(nearest);
    }
}

std::int64_t PixelAxis::indexAt(std::int64_t offset) const {
    return whole_ != 0 ? offset / whole_
                       : static_cast<std::int64_t>(static_cast<double>(offset) * (1.0 / scale_));
}

long PixelAxis::pixelAt(long position) const {
    return static_cast<long>(
        std::clamp<std::int64_t>(indexAt(std::max<std::int64_t>(position - begin_, 0)), 0, size_ - 1));
}

long PixelAxis::beginOf(long pixel) const {
    if (pixel >= size_) {
        return end();
    }
    auto offset = static_cast<std::int64_t>(std::ceil(static_cast<double>(pixel) * scale_));
    while (offset > 0 && indexAt(offset - 1) >= pixel) {
        --offset;
    }
    while (indexAt(offset) < pixel) {
        ++offset;
    }
    return static_cast<long>(begin_ + std::min(offset, extent_));
}

std::vector<long> PixelAxis::lines(long first, long last) const {
    std::vector<long> positions;
    last = std::min(last, end());
    if (first >= last) {
        return positions;
    }
    for (long pixel = pixelAt(first); pixel < size_; ++pixel) {
        const long position = beginOf(pixel);
        if (position >= last) {
            break;
        }
        if (position >= first) {
            positions.push_back(position);
        }
    }
    return positions;
}

} // namespace talview
