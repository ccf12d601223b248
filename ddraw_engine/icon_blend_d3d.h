// Blending of icons into a 32-bit composition surface by Direct3D: the icon becomes a texture that is drawn
// over the buffer, each index with its own colour and share.
#pragma once

#include "render/composition_buffer.h"

#include "ddraw_engine/direct_draw.h"

#include <d3d.h>

namespace talx {

// The objects that the blending runs on.
struct BlendTarget {
    IDirectDraw* directDraw;
    IDirect3D2* direct3d;        // null: blending always fails
    IDirectDrawSurface* surface; // 32-bit, made with DDSCAPS_3DDEVICE
};

class IconBlenderD3d {
public:
    // Draws the icon. Opaque and invisible indices come out exactly, others within 2 per channel of the
    // software blend; the unused byte of drawn pixels is undefined. False: it cannot, and the surface is as
    // it was.
    bool blend(const BlendTarget& target, const IconBlendJob& job);

    // Lets go of everything that belongs to the composition surface, before another one takes its place. A
    // device that could not be made is asked for again only after that.
    void release();

private:
    // A surface that is made anew only when it is too small.
    struct ReusedSurface {
        Microsoft::WRL::ComPtr<IDirectDrawSurface> surface;
        Extent extent;

        [[nodiscard]] bool covers(Extent wanted) const {
            return surface && extent.width >= wanted.width && extent.height >= wanted.height;
        }
    };

    // These throw what fails.
    void createDevice(const BlendTarget& target);
    void useDevice(const BlendTarget& target, const GUID& deviceClass);
    void fillTexture(IDirectDraw* directDraw, const IconBlendJob& job);
    void saveBuffer(const BlendTarget& target, const Rect& rect);

    // False: some of the icon may be drawn.
    bool draw(const Rect& rect);

    Microsoft::WRL::ComPtr<IDirect3DDevice2> device_;
    Microsoft::WRL::ComPtr<IDirect3DViewport2> viewport_;
    ReusedSurface texture_; // square, its side a power of two
    ReusedSurface saved_;   // the buffer under the icon, for the case that drawing breaks off
    Rect viewRect_;         // the composition surface
    DWORD textureMemory_ = 0;
    std::int32_t maxTextureSide_ = 0;
    bool deviceFailed_ = false; // to be made
};

} // namespace talx
