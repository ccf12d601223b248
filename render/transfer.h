// The transfer core: an image's pixels, one to one, into the composition buffer in its own format.
#pragma once

#include "render/engine_state.h"
#include "render/layer.h"
#include "render/resampler.h"

namespace talx {

// Draws the source with its pixel (0, 0) at (x, y), only inside clip. Nothing happens without a buffer or for
// an empty clip; kinds other than 8-bit grey leave a palettised buffer as it is. Failures: reaching the
// buffer's pixels or the image's.
HRESULT transfer(LayerSurface& surface, ColorState& colors, const SourceImage& source, long x, long y,
                 const Rect& clip);

} // namespace talx
