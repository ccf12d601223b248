// DrawIcon8 from placing to the blend.
#pragma once

#include "render/composition_buffer.h"
#include "render/engine_state.h"

namespace talx {

struct IconPlacement {
    double x; // buffer position of the icon's top left corner, cut toward zero
    double y;
    double scale; // buffer pixels per icon pixel
    Rect clip;    // the caller's rectangle
};

// Draws a 256-colour icon into the composition buffer. colorMap: at least 256 OLE_COLOR words;
// transparencyMap: at least 256 bytes in per cent. Nothing is drawn of a null icon, of one that clips to
// nothing, and where there is no buffer. Throws what fails (com/failure.h): E_POINTER for a null array,
// E_INVALIDARG for an array of another shape, the failures of translating a colour, of the resampler and of
// reaching pixels.
void drawIcon(CompositionBuffer& buffer, EngineState& state, ITalImage8Grey* icon, SAFEARRAY* colorMap,
              SAFEARRAY* transparencyMap, const IconPlacement& placement);

} // namespace talx
