// The transfer core: an image's pixels, one to one, into the composition buffer in its own format.
#pragma once

#include "render/composition_buffer.h"
#include "render/engine_state.h"
#include "render/image_planes.h"

namespace talx {

// Whether images of a kind can be seen in a format: on a palette only 8-bit grey ones can.
[[nodiscard]] bool isShown(const ImageOfKind& kind, PixelFormat format);

// Draws the source with its pixel (0, 0) at (x, y), only inside clip. Nothing happens without a buffer or for
// an empty clip; kinds other than 8-bit grey leave a palettised buffer as it is. Throws what keeps the pixels
// of the image or of the buffer out of reach.
void transfer(CompositionBuffer& buffer, ColorState& colors, const SourceImage& source, long x, long y,
              const Rect& clip);

} // namespace talx
