// Making a scaled copy of the visible part of an image.
#pragma once

#include "render/image_planes.h"
#include "render/pixels/geometry.h"
#include "render/scratch_memory.h"

#include <optional>

namespace talx {

enum class SamplingMethod { Nearest, CentreAligned };

// How an image is scaled.
struct Scaling {
    long x; // buffer position of the scaled image's pixel (0, 0)
    long y;
    double scale; // buffer pixels per image pixel
    SamplingMethod method;
    bool withMask; // whether the mask plane of a range image is wanted
};

// A new image of the source's kind that holds the pixels of clip when the source is drawn scaled: its pixel
// (0, 0) belongs at (clip.left, clip.top). clip lies inside the scaled image. The image's memory is taken
// from scratch.
//
// Nothing where there is nothing to draw: an empty clip, or fewer than 3 rows or columns with the
// centre-aligned method, which leaves such rectangles as they are. Throws the failures of creating the image
// and of ImagePlanes.
[[nodiscard]] std::optional<SourceImage> resample(const SourceImage& source, const Scaling& scaling,
                                                  const Rect& clip, ScratchMemory& scratch);

} // namespace talx
