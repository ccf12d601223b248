// DrawIcon8 from placing to the blend.
#pragma once

#include "render/engine_state.h"
#include "render/layer.h"

namespace talx {

struct IconPlacement {
    double x; // layer position of the icon's top left corner, cut toward zero
    double y;
    double scale; // layer pixels per icon pixel
    Rect clip;    // the caller's rectangle
};

// Draws a 256-colour icon into the composition buffer. colorMap: at least 256 OLE_COLOR words;
// transparencyMap: at least 256 bytes in per cent. A null icon, or one that clips to nothing, is S_OK.
// Failures: E_POINTER for a null array, E_INVALIDARG for an array of another shape, that of translating a
// colour, those of the resampler and of reaching pixels.
HRESULT drawIcon(LayerSurface& surface, EngineState& state, ITalImage8Grey* icon, SAFEARRAY* colorMap,
                 SAFEARRAY* transparencyMap, const IconPlacement& placement);

} // namespace talx
