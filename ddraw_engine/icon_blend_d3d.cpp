// See icon_blend_d3d.h.

#include "ddraw_engine/icon_blend_d3d.h"

#include <algorithm>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

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
    if (!target.direct3d || !target.surface || givenUp_) {
        return false;
    }
    try {
        restoreIfLost(target.surface);
        if (!device_) {
            givenUp_ = true; // unless it comes out well
            createDevice(target);
            givenUp_ = false;
        }
        require(intersect(job.target, viewRect_) == job.target, E_FAIL);
        draw(job.target, textures_.use(job, target.directDraw, device_.Get(), textureLimits_));
        return true;
    } catch (...) { // for want of memory, too: the software blend needs none
        return false;
    }
}

void IconBlenderD3d::release() {
    textures_ = {};
    viewport_.Reset();
    device_.Reset();
    givenUp_ = false;
}

void IconBlenderD3d::giveUp() {
    release();
    givenUp_ = true;
}

void IconBlenderD3d::createDevice(const BlendTarget& target) {
    // In the order of asking. A display adapter reads textures in its own memory, the processor those in the
    // system's only.
    constexpr struct {
        const GUID& deviceClass;
        DWORD textureMemory;
    } devices[] = {
        {IID_IDirect3DHALDevice, DDSCAPS_VIDEOMEMORY},
        {IID_IDirect3DMMXDevice, DDSCAPS_SYSTEMMEMORY},
        {IID_IDirect3DRGBDevice, DDSCAPS_SYSTEMMEMORY},
    };
    auto description = sizedStructure<DDSURFACEDESC>();
    check(target.surface->GetSurfaceDesc(&description));
    require(bytesPerPixel(description) == 4, E_FAIL); // the screen may have another format meanwhile
    viewRect_ = {0, 0, static_cast<std::int32_t>(description.dwWidth),
                 static_cast<std::int32_t>(description.dwHeight)};
    for (const auto& [deviceClass, textureMemory] : devices) {
        try {
            useDevice(target, deviceClass);
            textureLimits_ = {textureMemory, maxTextureSide(device_.Get())};
            return;
        } catch (const _com_error&) { // then the next one
        }
    }
    raise(E_FAIL);
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
    device_ = device;
    viewport_ = viewport;
}

// Nothing keeps the buffer as it was before: copying it costs more than the icon. What counts is what
// Direct3D promises. A DrawPrimitive that fails has drawn nothing. The drawing is in the surface when
// EndScene has succeeded, and only then: a scene whose end fails counts as not drawn, and its device, which
// may still have the scene open, goes at once. Should a driver have painted in spite of that, the blended
// pixels of this one icon are blended twice (opaque and invisible ones are right all the same), but of no
// other one: no device is made again for this buffer.
void IconBlenderD3d::draw(const Rect& rect, std::int32_t textureSide) {
    const float u = static_cast<float>(rect.width()) / static_cast<float>(textureSide);
    const float v = static_cast<float>(rect.height()) / static_cast<float>(textureSide);
    D3DTLVERTEX corners[] = {corner(rect.left, rect.top, 0, 0), corner(rect.right, rect.top, u, 0),
                             corner(rect.left, rect.bottom, 0, v), corner(rect.right, rect.bottom, u, v)};
    check(device_->BeginScene());
    const HRESULT drawn =
        device_->DrawPrimitive(D3DPT_TRIANGLESTRIP, D3DVT_TLVERTEX, corners, 4, D3DDP_WAIT | D3DDP_DONOTCLIP);
    const HRESULT ended = device_->EndScene();
    if (FAILED(ended)) {
        giveUp();
    }
    check(drawn);
    check(ended);
}

} // namespace talx
