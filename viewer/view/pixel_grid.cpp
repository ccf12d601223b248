// The arithmetic of the engines. Nearest: a scale within 1e-10 of a whole number makes blocks of that many
// pixels, any other one cuts the offset times the scale's inverse. Centre-aligned: counts in 16-bit fractions
// from the first position in the view, shifted by half a pixel, of the image, or at whole scales of the image
// less one of the view; edges are repeated, so that the last pixel of a magnified image does not appear.
#include "viewer/view/pixel_grid.h"

#include <algorithm>
#include <cmath>

namespace talview {

PixelAxis::PixelAxis(long begin, long size, double scale, bool isCentre)
    : begin_(begin), size_(size),
      extent_(static_cast<std::int64_t>(std::floor(static_cast<double>(size) * scale + 0.5))),
      last_(std::max<std::int64_t>(extent_ - 1, 0)), scale_(scale) {
    const double nearest = std::round(scale);
    if (std::abs(scale - nearest) < 1e-10) {
        whole_ = static_cast<std::int64_t>(nearest);
    }
    if (isCentre && whole_ != 1) {
        const double shift = whole_ > 1 ? 0.5 - 0.5 / scale : 0.5;
        const auto first = static_cast<std::int64_t>(std::ceil(shift * scale));
        const auto last =
            static_cast<std::int64_t>(std::ceil((static_cast<double>(size) - shift) * scale)) - 2;
        if (first <= last) { // otherwise there is no room, and the engine samples the nearest
            first_ = first;
            last_ = last;
            const double inverse = 1.0 / scale;
            whole_ = 0;
            shift_ = shift;
            counted_ = std::clamp<std::int64_t>(-begin_, first, last);
            start_ = static_cast<std::int64_t>((static_cast<double>(counted_) * inverse - shift) * 65536);
            step_ = static_cast<std::int64_t>(65536 * inverse);
        }
    }
}

std::int64_t PixelAxis::indexAt(std::int64_t offset) const {
    offset = std::clamp(offset, first_, last_);
    const std::int64_t index = step_ != 0 ? (start_ + (offset - counted_) * step_) >> 16
                               : whole_ != 0
                                   ? offset / whole_
                                   : static_cast<std::int64_t>(static_cast<double>(offset) * (1.0 / scale_));
    return std::clamp<std::int64_t>(index, 0, size_ - 1);
}

long PixelAxis::pixelAt(long position) const {
    return static_cast<long>(indexAt(position - begin_));
}

long PixelAxis::beginOf(long pixel) const {
    if (pixel <= indexAt(0)) {
        return static_cast<long>(begin_);
    }
    if (pixel > indexAt(last_)) {
        return end();
    }
    auto offset = static_cast<std::int64_t>(std::ceil((static_cast<double>(pixel) + shift_) * scale_));
    while (offset > 0 && indexAt(offset - 1) >= pixel) {
        --offset;
    }
    while (indexAt(offset) < pixel) {
        ++offset;
    }
    return at(offset);
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
