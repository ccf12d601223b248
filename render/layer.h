// How drawing reaches the one composition buffer of an engine.
#pragma once

#include "render/pixels/geometry.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/pixel_format.h"

#include <functional>
#include <windows.h>

namespace talx {

// A clipped icon and what its indices draw, ready to be blended into the composition buffer.
struct IconBlendJob {
    Rect target;         // layer pixels to draw
    ConstPixelRows icon; // icon index of the target's top left pixel
    const IconTables& tables;
};

// The composition buffer, as the shared drawing code sees it.
class LayerSurface {
public:
    [[nodiscard]] virtual bool hasBuffer() const = 0;

    // The format in which the buffer's pixels are written.
    [[nodiscard]] virtual LayerFormat format() const = 0;

    // Makes the pixels accessible for the length of one call of draw and returns its result, or the failure
    // to reach the pixels (or throws it, as _com_error). Only for a surface that has a buffer. draw must not
    // call anything that could change the buffer.
    virtual HRESULT withBits(const std::function<HRESULT(const LayerBits&)>& draw) = 0;

    // The palette that a palettised buffer's indices refer to; null for other formats.
    [[nodiscard]] virtual HPALETTE palette() const = 0;

    // Blends an icon into a 32-bit buffer by other means than the software blend. A failure means that
    // nothing was drawn.
    virtual HRESULT blendIconInHardware(const IconBlendJob&) { return E_FAIL; }

protected:
    ~LayerSurface() = default;
};

} // namespace talx
