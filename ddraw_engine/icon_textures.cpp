// See icon_textures.h.

#include "ddraw_engine/icon_textures.h"

#include "ddraw_engine/surface_lock.h"
#include "render/pixels/row_converters.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

constexpr std::int32_t smallestSide = 32;

// 0xAARRGGBB per index, alpha being the icon's share.
std::array<std::uint32_t, 256> texels(const IconTables& tables) {
    std::array<std::uint32_t, 256> result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
        const std::uint32_t share = invisibleWeight - tables.weight[i];
        const std::uint32_t alpha = (share * 255 + invisibleWeight / 2) / invisibleWeight;
        result[i] = alpha << 24 | (tables.color[i] & 0x00FFFFFF);
    }
    return result;
}

} // namespace

std::int32_t IconTextures::use(const IconBlendJob& job, IDirectDraw* directDraw, IDirect3DDevice2* device,
                               const TextureLimits& limits) {
    // The device's texture was used last, so that it is never the one that is given another icon.
    auto texture = std::ranges::find_if(textures_, [&](const Texture& t) { return t.holds(job); });
    if (texture == textures_.end()) {
        texture = std::ranges::min_element(textures_, {}, &Texture::lastUse);
        const Extent icon = job.target.extent();
        const std::int32_t longest = std::max({icon.width, icon.height, smallestSide});
        if (longest > texture->side) {
            *texture = createTexture(longest, directDraw, device, limits);
        }
        texture->fill(job);
    }
    if (used_ != &*texture) {
        used_ = nullptr; // unless it comes out well
        check(device->SetRenderState(D3DRENDERSTATE_TEXTUREHANDLE, texture->handle));
        used_ = &*texture;
    }
    texture->lastUse = ++uses_;
    return texture->side;
}

IconTextures::Texture IconTextures::createTexture(std::int32_t longest, IDirectDraw* directDraw,
                                                  IDirect3DDevice2* device, const TextureLimits& limits) {
    Texture texture;
    texture.side = static_cast<std::int32_t>(std::bit_ceil(static_cast<std::uint32_t>(longest)));
    require(texture.side <= limits.maxSide, E_FAIL);
    auto description = sizedStructure<DDSURFACEDESC>();
    description.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    description.dwWidth = description.dwHeight = static_cast<DWORD>(texture.side);
    description.ddsCaps.dwCaps = DDSCAPS_TEXTURE | limits.memory;
    description.ddpfPixelFormat = sizedStructure<DDPIXELFORMAT>();
    description.ddpfPixelFormat.dwFlags = DDPF_RGB | DDPF_ALPHAPIXELS;
    description.ddpfPixelFormat.dwRGBBitCount = 32;
    description.ddpfPixelFormat.dwRBitMask = 0x00FF0000;
    description.ddpfPixelFormat.dwGBitMask = 0x0000FF00;
    description.ddpfPixelFormat.dwBBitMask = 0x000000FF;
    description.ddpfPixelFormat.dwRGBAlphaBitMask = 0xFF000000;
    check(createSurface(directDraw, description, texture.surface));
    ComPtr<IDirect3DTexture2> face;
    check(texture.surface->QueryInterface(IID_IDirect3DTexture2, &face));
    check(nonNull(face)->GetHandle(device, &texture.handle));
    return texture;
}

bool IconTextures::Texture::holds(const IconBlendJob& job) const {
    const Extent icon = job.target.extent();
    if (!filled || !(icon == extent) || !(job.tables == tables) || surface->IsLost() == DDERR_SURFACELOST) {
        return false;
    }
    const auto width = static_cast<std::size_t>(icon.width);
    for (std::int32_t y = 0; y < icon.height; ++y) {
        if (std::memcmp(&indices[y * width], job.icon.data + y * job.icon.stride, width) != 0) {
            return false;
        }
    }
    return true;
}

void IconTextures::Texture::fill(const IconBlendJob& job) {
    filled = false; // unless it comes out well
    extent = job.target.extent();
    tables = job.tables;
    const auto width = static_cast<std::size_t>(extent.width);
    indices.resize(width * static_cast<std::size_t>(extent.height));
    for (std::int32_t y = 0; y < extent.height; ++y) {
        std::memcpy(&indices[y * width], job.icon.data + y * job.icon.stride, width);
    }
    const SurfaceLock lock(surface.Get());
    check(lock.result());
    const bool suits = lock.bytesPerPixel() == sizeof(std::uint32_t) && lock.extent().width >= extent.width &&
                       lock.extent().height >= extent.height;
    require(suits, E_FAIL);
    convertGrey8(PixelRows{lock.bits(), lock.pitch()}, {indices.data(), extent.width}, extent,
                 texels(tables).data());
    filled = true;
}

} // namespace talx
