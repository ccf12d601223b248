// See icon_blend_d3d.h.

#include "ddraw_engine/icon_blend_d3d.h"

#include "ddraw_engine/surface_lock.h"
#include "render/pixels/row_converters.h"

#include <algorithm>
#include <array>
#include <bit>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

constexpr std::int32_t smallestTextureSide = 32;
constexpr std::int32_t safeTextureSide = 256; // every device takes textures of this size

// The longest texture side that the device admits to.
std::int32_t maxTextureSide(IDirect3DDevice2* device) {
    auto hardware = sizedStructure<D3DDEVICEDESC>();
    auto software = sizedStructure<D3DDEVICEDESC>();
    if (FAILED(device->GetCaps(&hardware, &software))) {
        return safeTextureSide;
    }
    DWORD side = 0;
    for (const DWORD limit : {hardware.dwMaxTextureWidth, hardware.dwMaxTextureHeight,
                              software.dwMaxTextureWidth, software.dwMaxTextureHeight}) {
        if (limit != 0 && (side == 0 || limit < side)) {
            side = limit;
        }
    }
    return side == 0 ? safeTextureSide : static_cast<std::int32_t>(std::min<DWORD>(side, 1u << 16));
}

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

HRESULT createTexture(IDirectDraw* directDraw, DWORD memory, std::int32_t side,
                      ComPtr<IDirectDrawSurface>& texture) {
    auto description = sizedStructure<DDSURFACEDESC>();
    description.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    description.dwWidth = static_cast<DWORD>(side);
    description.dwHeight = static_cast<DWORD>(side);
    description.ddsCaps.dwCaps = DDSCAPS_TEXTURE | memory;
    description.ddpfPixelFormat = sizedStructure<DDPIXELFORMAT>();
    description.ddpfPixelFormat.dwFlags = DDPF_RGB | DDPF_ALPHAPIXELS;
    description.ddpfPixelFormat.dwRGBBitCount = 32;
    description.ddpfPixelFormat.dwRBitMask = 0x00FF0000;
    description.ddpfPixelFormat.dwGBitMask = 0x0000FF00;
    description.ddpfPixelFormat.dwBBitMask = 0x000000FF;
    description.ddpfPixelFormat.dwRGBAlphaBitMask = 0xFF000000;
    return createSurface(directDraw, description, texture);
}

// A corner of the icon in transformed coordinates. Pixel centres lie on whole numbers, so that a rectangle of
// pixels begins half a pixel before its first one.
D3DTLVERTEX corner(long x, long y, float u, float v) {
    D3DTLVERTEX vertex{};
    vertex.sx = static_cast<float>(x) - 0.5f;
    vertex.sy = static_cast<float>(y) - 0.5f;
    vertex.rhw = 1.0f;
    vertex.color = 0xFFFFFFFF;
    vertex.tu = u;
    vertex.tv = v;
    return vertex;
}

// What never changes on a device: texels are copied one to one and blended by their alpha.
void setRenderStates(IDirect3DDevice2* device) {
    constexpr struct {
        D3DRENDERSTATETYPE state;
        DWORD value;
    } states[] = {
        {D3DRENDERSTATE_TEXTUREMAPBLEND, D3DTBLEND_DECAL}, // the texture's colour and alpha, nothing else
        {D3DRENDERSTATE_TEXTUREMAG, D3DFILTER_NEAREST},
        {D3DRENDERSTATE_TEXTUREMIN, D3DFILTER_NEAREST},
        {D3DRENDERSTATE_TEXTUREPERSPECTIVE, FALSE},
        {D3DRENDERSTATE_ALPHABLENDENABLE, TRUE},
        {D3DRENDERSTATE_SRCBLEND, D3DBLEND_SRCALPHA},
        {D3DRENDERSTATE_DESTBLEND, D3DBLEND_INVSRCALPHA},
        {D3DRENDERSTATE_SHADEMODE, D3DSHADE_FLAT},
        {D3DRENDERSTATE_CULLMODE, D3DCULL_NONE},
        {D3DRENDERSTATE_ZENABLE, D3DZB_FALSE},
        {D3DRENDERSTATE_ZWRITEENABLE, FALSE},
        {D3DRENDERSTATE_ALPHATESTENABLE, FALSE},
        {D3DRENDERSTATE_COLORKEYENABLE, FALSE},
        {D3DRENDERSTATE_DITHERENABLE, FALSE},
        {D3DRENDERSTATE_FOGENABLE, FALSE},
        {D3DRENDERSTATE_SPECULARENABLE, FALSE},
    };
    for (const auto& [state, value] : states) {
        check(device->SetRenderState(state, value));
    }
}

} // namespace

bool IconBlenderD3d::blend(const BlendTarget& target, const IconBlendJob& job) {
    if (!target.direct3d || !target.surface || deviceFailed_) {
        return false;
    }
    try {
        restoreIfLost(target.surface);
        if (!device_) {
            deviceFailed_ = true; // unless it comes out well
            createDevice(target);
            deviceFailed_ = false;
        }
        if (!(intersect(job.target, viewRect_) == job.target)) {
            return false;
        }
        fillTexture(target.directDraw, job);
        saveBuffer(target, job.target);
        check(device_->BeginScene());
    } catch (const _com_error&) {
        return false;
    }
    if (draw(job.target)) {
        return true;
    }
    copySurface(target.surface, toRECT(job.target), saved_.surface.Get(),
                toRECT({0, 0, job.target.extent().width, job.target.extent().height}));
    return false;
}

void IconBlenderD3d::release() {
    saved_ = {};
    texture_ = {};
    viewport_.Reset();
    device_.Reset();
    deviceFailed_ = false;
}

void IconBlenderD3d::createDevice(const BlendTarget& target) {
    auto description = sizedStructure<DDSURFACEDESC>();
    check(target.surface->GetSurfaceDesc(&description));
    viewRect_ = {0, 0, static_cast<std::int32_t>(description.dwWidth),
                 static_cast<std::int32_t>(description.dwHeight)};
    // Drawing by the processor reads textures in system memory only, a display adapter those in its own.
    try {
        useDevice(target, IID_IDirect3DHALDevice);
        textureMemory_ = DDSCAPS_VIDEOMEMORY;
        return;
    } catch (const _com_error&) {
        textureMemory_ = DDSCAPS_SYSTEMMEMORY;
    }
    try {
        useDevice(target, IID_IDirect3DMMXDevice);
    } catch (const _com_error&) {
        useDevice(target, IID_IDirect3DRGBDevice);
    }
}

void IconBlenderD3d::useDevice(const BlendTarget& target, const GUID& deviceClass) {
    ComPtr<IDirect3DDevice2> device;
    check(target.direct3d->CreateDevice(deviceClass, target.surface, &device));
    setRenderStates(nonNull(device));
    ComPtr<IDirect3DViewport2> viewport;
    check(target.direct3d->CreateViewport(&viewport, nullptr));
    check(device->AddViewport(nonNull(viewport)));
    auto view = sizedStructure<D3DVIEWPORT2>();
    view.dwWidth = static_cast<DWORD>(viewRect_.right);
    view.dwHeight = static_cast<DWORD>(viewRect_.bottom);
    view.dvClipX = -1.0f;
    view.dvClipY = 1.0f;
    view.dvClipWidth = 2.0f;
    view.dvClipHeight = 2.0f;
    view.dvMaxZ = 1.0f;
    check(viewport->SetViewport2(&view));
    check(device->SetCurrentViewport(viewport.Get()));
    maxTextureSide_ = maxTextureSide(device.Get());
    device_ = device;
    viewport_ = viewport;
}

void IconBlenderD3d::fillTexture(IDirectDraw* directDraw, const IconBlendJob& job) {
    const Extent icon = job.target.extent();
    if (!texture_.covers(icon)) {
        const auto longest =
            static_cast<std::uint32_t>(std::max({icon.width, icon.height, smallestTextureSide}));
        const auto side = static_cast<std::int32_t>(std::bit_ceil(longest));
        require(side <= maxTextureSide_, E_FAIL);
        ReusedSurface larger{nullptr, {side, side}};
        check(createTexture(directDraw, textureMemory_, side, larger.surface));
        texture_ = larger;
    }
    {
        const SurfaceLock lock(texture_.surface.Get());
        check(lock.result());
        const bool suits = lock.bytesPerPixel() == sizeof(std::uint32_t) &&
                           lock.extent().width >= icon.width && lock.extent().height >= icon.height;
        require(suits, E_FAIL);
        convertGrey8(PixelRows{lock.bits(), lock.pitch()}, job.icon, icon, texels(job.tables).data());
    }
    ComPtr<IDirect3DTexture2> texture;
    D3DTEXTUREHANDLE handle = 0;
    check(texture_.surface->QueryInterface(IID_IDirect3DTexture2, &texture));
    check(nonNull(texture)->GetHandle(device_.Get(), &handle));
    check(device_->SetRenderState(D3DRENDERSTATE_TEXTUREHANDLE, handle));
}

void IconBlenderD3d::saveBuffer(const BlendTarget& target, const Rect& rect) {
    const Extent wanted = rect.extent();
    if (!saved_.covers(wanted)) {
        ReusedSurface larger{
            nullptr,
            {std::max(wanted.width, saved_.extent.width), std::max(wanted.height, saved_.extent.height)}};
        check(createSurface(target.directDraw, DDSCAPS_OFFSCREENPLAIN, larger.extent.width,
                            larger.extent.height, larger.surface));
        saved_ = larger;
    }
    restoreIfLost(saved_.surface.Get());
    check(copySurface(saved_.surface.Get(), toRECT({0, 0, wanted.width, wanted.height}), target.surface,
                      toRECT(rect)));
}

bool IconBlenderD3d::draw(const Rect& rect) {
    const float u = static_cast<float>(rect.width()) / static_cast<float>(texture_.extent.width);
    const float v = static_cast<float>(rect.height()) / static_cast<float>(texture_.extent.height);
    D3DTLVERTEX corners[] = {corner(rect.left, rect.top, 0, 0), corner(rect.right, rect.top, u, 0),
                             corner(rect.left, rect.bottom, 0, v), corner(rect.right, rect.bottom, u, v)};
    const HRESULT drawn =
        device_->DrawPrimitive(D3DPT_TRIANGLESTRIP, D3DVT_TLVERTEX, corners, 4, D3DDP_WAIT | D3DDP_DONOTCLIP);
    const HRESULT ended = device_->EndScene();
    return SUCCEEDED(drawn) && SUCCEEDED(ended);
}

} // namespace talx
