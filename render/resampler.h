// Making a scaled copy of the visible part of an image.
#pragma once

#include "render/image_planes.h"
#include "render/pixels/geometry.h"

#include <optional>

namespace talx {

enum class SamplingMethod { Nearest, CentreAligned };

// A new image of the source's kind that holds the pixels of clip when the source is drawn at (x, y) at this
// scale: its pixel (0, 0) belongs at (clip.left, clip.top). clip lies inside the scaled image.
//
// Nothing where there is nothing to draw: an empty clip, or fewer than 3 rows or columns with the
// centre-aligned method, which leaves such rectangles as they are. Throws the failures of creating the image
// and of ImagePlanes.
[[nodiscard]] std::optional<SourceImage> resample(const SourceImage& source, double scale, long x, long y,
                                                  const Rect& clip, SamplingMethod method);

} // namespace talx
