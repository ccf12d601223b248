// The resampling kernels: part of an image, scaled, written one destination pixel at a time.
//
// target is a rectangle in scaled-image coordinates (the whole scaled image starts at (0, 0)); its pixel
// (left, top) goes to destination.data. No pixel outside the source is ever read: an index that would leave
// it is held at its edge. A source without pixels and an empty target write nothing. Both throw
// std::bad_alloc; allocations are bounded by the target's width, and with the centre-aligned method by the
// source's.
#pragma once

#include "render/pixels/geometry.h"
#include "render/pixels/pixel_format.h"

namespace talx {

// Nearest neighbour: destination pixel x shows source pixel trunc(x * (1 / scale)); at a scale within 1e-10
// of a whole number k, source pixel x div k. A part of the target shows what the whole shows there.
void resampleNearest8(const PlaneView& source, const PixelRows& destination, double scale,
                      const Rect& target);
void resampleNearest16(const PlaneView& source, const PixelRows& destination, double scale,
                       const Rect& target);

// Centre-aligned: the source pixel whose centre lies nearest below the mapped centre, edges replicated, in
// fixed point with a 16-bit fraction. A target less than 3 wide or high writes nothing.
void resampleCentre8(const PlaneView& source, const PixelRows& destination, double scale, const Rect& target);
void resampleCentre16(const PlaneView& source, const PixelRows& destination, double scale,
                      const Rect& target);

} // namespace talx
