// How drawing reaches the one composition buffer of an engine.
#pragma once

#include "render/pixels/function_ref.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/pixel_format.h"

#include <windows.h>

namespace talx {

// A clipped icon and what its indices draw, ready to be blended into the composition buffer.
struct IconBlendJob {
    Rect target;         // buffer pixels to draw
    ConstPixelRows icon; // icon index of the target's top left pixel
    const IconTables& tables;
};

// The composition buffer, as the shared drawing code sees it.
class CompositionBuffer {
public:
    // False after a resize that could not make one.
    [[nodiscard]] virtual bool exists() const = 0;

    // The format in which the buffer's pixels are written.
    [[nodiscard]] virtual PixelFormat format() const = 0;

    // Makes the pixels accessible for the length of one call of draw. Only for a buffer that exists. draw
    // must not call anything that could change the buffer. Throws what keeps the pixels out of reach, and
    // what draw throws.
    virtual void withBits(FunctionRef<void(const BufferBits&)> draw) = 0;

    // The palette that a palettised buffer's indices refer to; null for other formats.
    [[nodiscard]] virtual HPALETTE palette() const = 0;

    // Blends an icon into a 32-bit buffer by other means than the software blend. False: nothing counts as
    // drawn.
    virtual bool blendIconInHardware(const IconBlendJob&) { return false; }

protected:
    ~CompositionBuffer() = default;
};

} // namespace talx
