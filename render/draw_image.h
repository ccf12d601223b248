// DrawImage from placing to the transfer.
#pragma once

#include "render/engine_state.h"
#include "render/layer.h"

namespace talx {

struct ImagePlacement {
    long x; // layer position of the image's pixel (0, 0)
    long y;
    double scale; // layer pixels per image pixel
    Rect clip;    // the caller's rectangle
};

// Draws an image into the composition buffer by the engine's scaling method. A null image, or one that
// clips to nothing, is S_OK.
HRESULT drawImage(LayerSurface& surface, EngineState& state, ITalImage* image,
                  const ImagePlacement& placement);

} // namespace talx
