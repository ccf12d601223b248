// DrawImage from placing to the transfer.
#pragma once

#include "render/composition_buffer.h"
#include "render/engine_state.h"

namespace talx {

struct ImagePlacement {
    long x; // buffer position of the image's pixel (0, 0)
    long y;
    double scale; // buffer pixels per image pixel
    Rect clip;    // the caller's rectangle
};

// Draws an image into the composition buffer by the engine's scaling method. Nothing is drawn of a null
// image, of one that clips to nothing, and where there is no buffer. Throws what fails (com/failure.h).
void drawImage(CompositionBuffer& buffer, EngineState& state, ITalImage* image,
               const ImagePlacement& placement);

} // namespace talx
