// Blending of icons into a 32-bit composition surface by Direct3D: the icon becomes a texture that is drawn
// over the buffer, each index with its own colour and share.
#pragma once

#include "render/composition_buffer.h"

#include "ddraw_engine/icon_textures.h"

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
    // software blend; the unused byte of drawn pixels is undefined. False: it could not, and nothing counts
    // as drawn.
    bool blend(const BlendTarget& target, const IconBlendJob& job);

    // Lets go of everything that belongs to the composition surface, before another one takes its place. A
    // device that was given up is asked for again only after that.
    void release();

private:
    void giveUp();

    // These throw what fails.
    void createDevice(const BlendTarget& target);
    void useDevice(const BlendTarget& target, const GUID& deviceClass);
    void draw(const Rect& rect, std::int32_t textureSide);

    Microsoft::WRL::ComPtr<IDirect3DDevice2> device_;
    Microsoft::WRL::ComPtr<IDirect3DViewport2> viewport_;
    TextureLimits textureLimits_;
    IconTextures textures_;
    Rect viewRect_; // the composition surface
    bool givenUp_ = false;
};

} // namespace talx
