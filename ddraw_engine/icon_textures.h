// The textures from which Direct3D draws icons.
#pragma once

#include "render/composition_buffer.h"

#include "ddraw_engine/direct_draw.h"

#include <d3d.h>

#include <array>
#include <vector>

namespace talx {

// What a device asks of its textures.
struct TextureLimits {
    DWORD memory = 0; // DDSCAPS_VIDEOMEMORY or DDSCAPS_SYSTEMMEMORY
    std::int32_t maxSide = 0;
};

// A few textures of one device, with the icons that were drawn last. A texture is filled only with an icon
// that none of them holds: filling waits until everything is drawn from it.
class IconTextures {
public:
    // Makes one the device's texture that holds the icon in its top left corner, the icon's share as alpha,
    // and answers its side. Throws what fails.
    std::int32_t use(const IconBlendJob& job, IDirectDraw* directDraw, IDirect3DDevice2* device,
                     const TextureLimits& limits);

private:
    // A square whose side is a power of two. It is made anew only for an icon that is larger.
    struct Texture {
        Microsoft::WRL::ComPtr<IDirectDrawSurface> surface;
        D3DTEXTUREHANDLE handle = 0;
        std::int32_t side = 0;
        std::uint64_t lastUse = 0;

        // The icon in it, by value: its owner may write to the image's memory and to the maps.
        bool filled = false;
        Extent extent;
        std::vector<std::uint8_t> indices; // rows without gaps
        IconTables tables;

        [[nodiscard]] bool holds(const IconBlendJob& job) const;
        void fill(const IconBlendJob& job);
    };

    static Texture createTexture(std::int32_t longest, IDirectDraw* directDraw, IDirect3DDevice2* device,
                                 const TextureLimits& limits);

    std::array<Texture, 4> textures_;
    const Texture* used_ = nullptr; // the device's texture
    std::uint64_t uses_ = 0;
};

} // namespace talx
