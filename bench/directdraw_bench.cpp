// The DirectDraw engine beside what a program without it does on surfaces of its own.
#include "bench/engine_calls.h"

#include <ddraw.h>

#include <d3d.h>

#include <cstdint>
#include <cstring>

namespace talx::bench {

namespace {

// What a program without the engine does itself: surfaces of its own, and a textured quad.
struct BareDirectDraw {
    explicit BareDirectDraw(HWND window) {
        using Create = HRESULT(WINAPI*)(GUID*, IDirectDraw**, IUnknown*);
        const auto create = reinterpret_cast<Create>(
            reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"ddraw.dll"), "DirectDrawCreate")));
        check(create(nullptr, &directDraw, nullptr), "DirectDrawCreate");
        check(directDraw->SetCooperativeLevel(window, DDSCL_NORMAL), "SetCooperativeLevel");
        check(directDraw->QueryInterface(IID_IDirect3D2, &direct3d), "IDirect3D2");
        DDSURFACEDESC description{};
        description.dwSize = sizeof description;
        description.dwFlags = DDSD_CAPS;
        description.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
        check(directDraw->CreateSurface(&description, &primary, nullptr), "primary surface");
    }
    ComPtr<IDirectDrawSurface> surface(DWORD caps, long width, long height, bool alpha = false) const {
        DDSURFACEDESC description{};
        description.dwSize = sizeof description;
        description.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT | (alpha ? DDSD_PIXELFORMAT : 0);
        description.dwWidth = static_cast<DWORD>(width);
        description.dwHeight = static_cast<DWORD>(height);
        description.ddsCaps.dwCaps = caps;
        description.ddpfPixelFormat = {
            sizeof(DDPIXELFORMAT), DDPF_RGB | DDPF_ALPHAPIXELS, 0, {32}, {0xFF0000}, {0xFF00}, {0xFF},
            {0xFF000000}};
        ComPtr<IDirectDrawSurface> made;
        check(directDraw->CreateSurface(&description, &made, nullptr), "a surface");
        return made;
    }

    ComPtr<IDirectDraw> directDraw;
    ComPtr<IDirect3D2> direct3d;
    ComPtr<IDirectDrawSurface> primary;
};

// Blended quads of 32 x 32 pixels, each in a scene of its own. What stays is set once; of two textures in
// turn the next one is set before it is drawn.
struct BareQuads {
    BareQuads(const BareDirectDraw& bare, long width, long height)
        : target(bare.surface(DDSCAPS_OFFSCREENPLAIN | DDSCAPS_3DDEVICE, width, height)) {
        check(bare.direct3d->CreateDevice(IID_IDirect3DHALDevice, target.Get(), &device), "CreateDevice");
        check(bare.direct3d->CreateViewport(&viewport, nullptr), "CreateViewport");
        check(device->AddViewport(viewport.Get()), "AddViewport");
        D3DVIEWPORT2 view{};
        view.dwSize = sizeof view;
        view.dwWidth = static_cast<DWORD>(width);
        view.dwHeight = static_cast<DWORD>(height);
        view.dvClipX = -1;
        view.dvClipY = 1;
        view.dvClipWidth = 2;
        view.dvClipHeight = 2;
        view.dvMaxZ = 1;
        check(viewport->SetViewport2(&view), "SetViewport2");
        check(device->SetCurrentViewport(viewport.Get()), "SetCurrentViewport");
        for (Texture& texture : textures) {
            texture.surface = bare.surface(DDSCAPS_TEXTURE | DDSCAPS_VIDEOMEMORY, 32, 32, true);
            DDSURFACEDESC lock{};
            lock.dwSize = sizeof lock;
            check(texture.surface->Lock(nullptr, &lock, DDLOCK_WAIT, nullptr), "Lock");
            std::memset(lock.lpSurface, 0x80, static_cast<std::size_t>(lock.lPitch) * 32);
            texture.surface->Unlock(nullptr);
            ComPtr<IDirect3DTexture2> face;
            check(texture.surface->QueryInterface(IID_IDirect3DTexture2, &face), "IDirect3DTexture2");
            check(face->GetHandle(device.Get(), &texture.handle), "GetHandle");
        }
        use(textures[0]);
        device->SetRenderState(D3DRENDERSTATE_TEXTUREMAPBLEND, D3DTBLEND_DECAL);
        device->SetRenderState(D3DRENDERSTATE_ALPHABLENDENABLE, TRUE);
        device->SetRenderState(D3DRENDERSTATE_SRCBLEND, D3DBLEND_SRCALPHA);
        device->SetRenderState(D3DRENDERSTATE_DESTBLEND, D3DBLEND_INVSRCALPHA);
        device->SetRenderState(D3DRENDERSTATE_ZENABLE, D3DZB_FALSE);
        device->SetRenderState(D3DRENDERSTATE_CULLMODE, D3DCULL_NONE);
    }
    struct Texture {
        ComPtr<IDirectDrawSurface> surface;
        D3DTEXTUREHANDLE handle = 0;
    };
    void use(const Texture& texture) const {
        device->SetRenderState(D3DRENDERSTATE_TEXTUREHANDLE, texture.handle);
    }
    void draw(long x, long y) const {
        D3DTLVERTEX corners[4]{};
        for (int i = 0; i < 4; ++i) {
            corners[i].sx = static_cast<float>(x + i % 2 * 32) - 0.5f;
            corners[i].sy = static_cast<float>(y + i / 2 * 32) - 0.5f;
            corners[i].rhw = 1;
            corners[i].color = 0xFFFFFFFF;
            corners[i].tu = static_cast<float>(i % 2);
            corners[i].tv = static_cast<float>(i / 2);
        }
        check(device->BeginScene(), "BeginScene");
        check(device->DrawPrimitive(D3DPT_TRIANGLESTRIP, D3DVT_TLVERTEX, corners, 4,
                                    D3DDP_WAIT | D3DDP_DONOTCLIP),
              "DrawPrimitive");
        check(device->EndScene(), "EndScene");
    }
    // Waits until everything is drawn.
    void lock() const {
        DDSURFACEDESC lock{};
        lock.dwSize = sizeof lock;
        check(target->Lock(nullptr, &lock, DDLOCK_WAIT, nullptr), "Lock");
        target->Unlock(nullptr);
    }

    ComPtr<IDirectDrawSurface> target;
    Texture textures[2];
    ComPtr<IDirect3DDevice2> device;
    ComPtr<IDirect3DViewport2> viewport;
};

constexpr long width = 1000, height = 700;

// Wine has a thread for each DirectDraw object that goes on spinning for some milliseconds when it has
// nothing more to draw: the others have to wait until it sleeps.
constexpr Pace pace{21, 0.05, 30};

// Blended icons beside quads of the same size and number, up to a lock of the surface, which waits for them
// and reads it back.
void icons(const std::vector<Engine>& engines, const BareDirectDraw& bare) {
    const BareQuads quads(bare, width, height);
    const auto pixels = makeImage(Kind::grey8, 32, 32), lockedPixel = makeImage(Kind::grey8, 1, 1);
    IconMaps maps[]{IconMaps([](int) { return 30; }), IconMaps([](int i) { return i % 101; })};
    std::vector<EngineCall> draws[2]; // of either icon, at every place
    for (int i = 0; i < 50; ++i) {
        for (const int kind : {0, 1}) {
            draws[kind].push_back(drawingIcon(pixels, maps[kind], i % 10 * 90, i / 10 * 120));
        }
    }
    const auto lock = drawing(lockedPixel, 1);
    const auto compare = [&](const char* name, int count, int kinds) {
        row(
            name,
            [&, count, kinds] {
                for (int i = 0; i < count; ++i) {
                    if (kinds > 1) {
                        quads.use(quads.textures[i % kinds]);
                    }
                    quads.draw(i % 10 * 90, i % 50 / 10 * 120);
                }
                quads.lock();
            },
            onAll(engines,
                  [&, count, kinds](ITalRenderEngine2* engine) {
                      for (int i = 0; i < count; ++i) {
                          draws[i % kinds][i % 50](engine);
                      }
                      lock(engine);
                  }),
            pace);
    };
    compare("1 icon, lock", 1, 1);
    compare("50 icons, lock", 50, 1);
    compare("50 icons of two kinds in turn, lock", 50, 2);
    compare("1000 icons, lock", 1000, 1);
    compare("1000 icons of two kinds in turn, lock", 1000, 2);
}

} // namespace

void directDrawCalls() {
    const TestWindow window(width, height, true);
    const auto engines = makeEngines(__uuidof(TalRenderEngine), window.get(), width, height);
    const BareDirectDraw bare(window.get());
    icons(engines, bare);

    const auto image = makeImage(Kind::color, width, height);
    const auto plain = bare.surface(DDSCAPS_OFFSCREENPLAIN, width, height);
    std::vector<std::uint8_t> pixels(4 * width * height, 7);
    row(
        "DrawImage, RefreshScreen / Lock, copy, Blt",
        [&] {
            DDSURFACEDESC lock{};
            lock.dwSize = sizeof lock;
            check(plain->Lock(nullptr, &lock, DDLOCK_WAIT, nullptr), "Lock");
            for (long y = 0; y < height; ++y) {
                std::memcpy(static_cast<std::uint8_t*>(lock.lpSurface) + y * lock.lPitch,
                            &pixels[4 * width * y], 4 * width);
            }
            plain->Unlock(nullptr);
            RECT from{0, 0, width, height}, to{8, 8, 8 + width, 8 + height};
            check(bare.primary->Blt(&to, plain.Get(), &from, DDBLT_WAIT, nullptr), "Blt");
        },
        onAll(engines,
              [&](ITalRenderEngine2* engine) {
                  drawing(image, 1)(engine);
                  check(engine->RefreshScreen(8, 8, 0, 0, width, height), "RefreshScreen");
              }),
        pace);
}
} // namespace talx::bench
