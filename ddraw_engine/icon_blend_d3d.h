// Blending of icons into a 32-bit composition surface by Direct3D: the icon becomes a texture that is drawn
// over the layer, each index with its own colour and share.
#pragma once

#include "render/layer.h"

#include "ddraw_engine/direct_draw.h"

#include <d3d.h>

namespace talx {

// The objects that the blending runs on.
struct BlendTarget {
    IDirectDraw* directDraw;
    IDirect3D2* direct3d;      // null: blending always fails
    IDirectDrawSurface* layer; // 32-bit, made with DDSCAPS_3DDEVICE
};

class IconBlenderD3d {
public:
    // Draws the icon. Opaque and invisible indices come out exactly, others within 2 per channel of the
    // software blend; the unused byte of drawn pixels is undefined. After a failure the layer is as it was.
    HRESULT blend(const BlendTarget& target, const IconBlendJob& job);

    // Lets go of everything that belongs to the layer surface, before another one takes its place.
    void release();

private:
    // A surface that is made anew only when it is too small.
    struct ReusedSurface {
        Microsoft::WRL::ComPtr<IDirectDrawSurface> surface;
        std::int32_t width = 0;
        std::int32_t height = 0;

        [[nodiscard]] bool covers(std::int32_t w, std::int32_t h) const {
            return surface && width >= w && height >= h;
        }
    };

    // These throw _com_error.
    void createDevice(const BlendTarget& target);
    void useDevice(const BlendTarget& target, const GUID& deviceClass);
    void fillTexture(IDirectDraw* directDraw, const IconBlendJob& job);
    void saveLayer(const BlendTarget& target, const Rect& rect);

    HRESULT draw(const Rect& rect);

    Microsoft::WRL::ComPtr<IDirect3DDevice2> device_;
    Microsoft::WRL::ComPtr<IDirect3DViewport2> viewport_;
    ReusedSurface texture_; // square, its side a power of two
    ReusedSurface saved_;   // the layer under the icon, for the case that drawing breaks off
    Rect viewRect_;         // the layer surface
    DWORD textureMemory_ = 0;
    std::int32_t maxTextureSide_ = 0;
};

} // namespace talx
