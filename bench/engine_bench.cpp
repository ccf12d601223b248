// Times whole calls of the engines under Windows, each as a ratio to a plain step that is taken in the same
// round: copying the view's 32-bit pixels, or what the platform itself does for the same work.
//
//   engine_bench.exe [--only gdi|small|live|directdraw] [OTHER-talxrend.dll]
//
// It takes the registered DLLs. A second engine DLL, an older one for instance, is timed beside the
// registered one in the same rounds.
#include <initguid.h>

#include <windows.h>

#include <ddraw.h>

#include <d3d.h>

#include "talxrend.h"

#include <oleauto.h>
#include <wrl/client.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using Microsoft::WRL::ComPtr;

constexpr long viewWidth = 1920;
constexpr long viewHeight = 1080;
constexpr int rounds = 21;
constexpr long least = -0x7FFFFFFF - 1;
constexpr long most = 0x7FFFFFFF;

void check(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        std::fprintf(stderr, "%s failed: %08lx\n", what, static_cast<unsigned long>(hr));
        std::exit(1);
    }
}

// --- measuring

using Work = std::function<void()>;

// Seconds that a call takes: as many calls as make a measurable time, at least one.
double seconds(const Work& work, int calls) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        work();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / calls;
}

int callsFor(const Work& work) {
    work();
    const double once = std::max(seconds(work, 1), 1e-7);
    return static_cast<int>(std::clamp(0.004 / once, 1.0, 4000.0));
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// A line of the table: the unit's microseconds and, for each piece of work, the median of its ratios to the
// unit.
void row(const std::string& name, const Work& unit, const std::vector<Work>& works) {
    std::vector<int> calls{callsFor(unit)};
    for (const Work& work : works) {
        calls.push_back(callsFor(work));
    }
    std::vector<std::vector<double>> ratios(works.size());
    std::vector<double> units;
    for (int round = 0; round < rounds; ++round) {
        units.push_back(seconds(unit, calls[0]));
        for (std::size_t i = 0; i < works.size(); ++i) {
            ratios[i].push_back(seconds(works[i], calls[i + 1]) / units.back());
        }
    }
    std::printf("%-44s %10.1f", name.c_str(), median(units) * 1e6);
    for (const auto& each : ratios) {
        std::printf(" %8.2f", median(each));
    }
    std::printf("\n");
    std::fflush(stdout);
}

void copyBytes(void* to, const void* from, std::size_t size) {
    asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(size) : : "memory");
}
void setBytes(void* to, std::size_t size) {
    asm volatile("rep stosb" : "+D"(to), "+c"(size) : "a"(0x55) : "memory");
}

// --- what is drawn

enum class Kind { grey8, grey16, range, maskedRange, color };

ComPtr<ITalImage> makeImage(Kind kind, long width, long height) {
    const CLSID& clsid = kind == Kind::grey8    ? __uuidof(TalImage8Grey)
                         : kind == Kind::grey16 ? __uuidof(TalImage16Grey)
                         : kind == Kind::color  ? __uuidof(TalImageColor)
                                                : __uuidof(TalImage16Range);
    ComPtr<ITalImageMemory> memory;
    check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory)), "creating an image");
    const long planes = kind == Kind::color ? 3 : kind == Kind::maskedRange ? 2 : 1;
    check(memory->Allocate(width, height, planes), "Allocate");
    std::minstd_rand random(1);
    for (long plane = 0; plane < planes; ++plane) {
        ComPtr<ITalPelAccess> access;
        check(memory->CreatePlaneAccess(plane, talPelAccessWrite, &access), "CreatePlaneAccess");
        __int64 data = 0;
        long stride = 0;
        access->get_Data(&data);
        access->get_RowStride(&stride);
        const bool wide = kind != Kind::grey8 && kind != Kind::color && plane == 0;
        for (long y = 0; y < height; ++y) {
            auto* bytes = reinterpret_cast<std::uint8_t*>(data) + static_cast<std::ptrdiff_t>(y) * stride;
            for (long x = 0; x < width; ++x) { // a smooth picture with some noise
                const double wave = 0.5 + 0.4 * std::sin(x * 0.01 + plane) * std::cos(y * 0.013);
                const double value = wave + (random() % 1000) * 2e-5;
                if (wide) {
                    reinterpret_cast<std::uint16_t*>(bytes)[x] = static_cast<std::uint16_t>(value * 65535);
                } else {
                    bytes[x] = static_cast<std::uint8_t>(kind == Kind::maskedRange ? random() % 8 != 0
                                                                                   : value * 255);
                }
            }
        }
        access->Unlock();
    }
    ComPtr<ITalImage> image;
    check(memory.As(&image), "ITalImage");
    return image;
}

struct IconMaps {
    explicit IconMaps(const std::function<int(int)>& transparency)
        : colors(SafeArrayCreateVector(VT_I4, 0, 256)),
          transparencies(SafeArrayCreateVector(VT_UI1, 0, 256)) {
        for (int i = 0; i < 256; ++i) {
            static_cast<std::uint32_t*>(colors->pvData)[i] =
                static_cast<std::uint32_t>(i) * 0x010203 & 0xFFFFFF;
            static_cast<std::uint8_t*>(transparencies->pvData)[i] =
                static_cast<std::uint8_t>(transparency(i));
        }
    }
    ~IconMaps() {
        SafeArrayDestroy(colors);
        SafeArrayDestroy(transparencies);
    }
    IconMaps(const IconMaps&) = delete;
    IconMaps& operator=(const IconMaps&) = delete;

    SAFEARRAY* colors;
    SAFEARRAY* transparencies;
};

// --- engines

class TestWindow {
public:
    TestWindow(long width, long height, bool shown)
        : window_(CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, L"STATIC", L"", WS_POPUP, 8, 8, width,
                                  height, nullptr, nullptr, nullptr, nullptr)) {
        if (shown) {
            ShowWindow(window_, SW_SHOWNA);
            UpdateWindow(window_);
            for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
                DispatchMessageW(&message);
            }
        }
    }
    ~TestWindow() { DestroyWindow(window_); }
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    [[nodiscard]] HWND get() const { return window_; }

private:
    HWND window_;
};

using Engine = ComPtr<ITalRenderEngine2>;

// One engine of each DLL that is timed.
std::vector<HMODULE> modules;

std::vector<Engine> makeEngines(const CLSID& clsid, HWND window, long width, long height) {
    std::vector<Engine> engines;
    for (const HMODULE module : modules) {
        const auto get = reinterpret_cast<decltype(&DllGetClassObject)>(
            reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
        ComPtr<IClassFactory> factory;
        Engine engine;
        check(get(clsid, IID_PPV_ARGS(&factory)), "DllGetClassObject");
        check(factory->CreateInstance(nullptr, IID_PPV_ARGS(&engine)), "CreateInstance");
        check(engine->Initialize(reinterpret_cast<INT_PTR>(window), width, height), "Initialize");
        engines.push_back(engine);
    }
    return engines;
}

void setMethod(const std::vector<Engine>& engines, int method) {
    for (const Engine& engine : engines) {
        ComPtr<ITalRenderEngineScalingParams> scaling;
        check(engine.As(&scaling), "ITalRenderEngineScalingParams");
        scaling->put_ScalingMethod(static_cast<TalRenderEngineScalingMethodConstants>(method));
    }
}

std::vector<Work> onAll(const std::vector<Engine>& engines,
                        const std::function<void(ITalRenderEngine2*)>& call) {
    std::vector<Work> works;
    for (const Engine& engine : engines) {
        works.push_back([=] { call(engine.Get()); });
    }
    return works;
}

std::function<void(ITalRenderEngine2*)> drawing(ComPtr<ITalImage> image, double scale,
                                                RECT clip = {least, least, most, most}) {
    return [=](ITalRenderEngine2* engine) {
        check(engine->DrawImage(0, image.Get(), 0, 0, scale, clip.left, clip.top, clip.right, clip.bottom, 0),
              "DrawImage");
    };
}

// An 8-bit picture as GDI draws it itself.
struct GdiPicture {
    GdiPicture(long w, long h) : width(w), height(h), pixels((w + 3) / 4 * 4 * h) {
        std::minstd_rand random(1);
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint8_t>(random() >> 8); });
        info.header = {sizeof info.header, w, -h, 1, 8, BI_RGB, 0, 0, 0, 256, 0};
        for (int i = 0; i < 256; ++i) {
            info.colors[i] = {static_cast<BYTE>(i), static_cast<BYTE>(i), static_cast<BYTE>(i), 0};
        }
    }
    void stretch(HDC dc, double scale) const {
        StretchDIBits(dc, 0, 0, std::lround(width * scale), std::lround(height * scale), 0, 0, width, height,
                      pixels.data(), reinterpret_cast<const BITMAPINFO*>(&info), DIB_RGB_COLORS, SRCCOPY);
        GdiFlush();
    }

    long width;
    long height;
    std::vector<std::uint8_t> pixels;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colors[256];
    } info{};
};

// --- the tables

std::function<void(ITalRenderEngine2*)> iconOf(const ComPtr<ITalImage>& image, IconMaps& maps) {
    ComPtr<ITalImage8Grey> grey;
    check(image.As(&grey), "ITalImage8Grey");
    return [grey, &maps](ITalRenderEngine2* engine) {
        check(engine->DrawIcon8(0, grey.Get(), &maps.colors, &maps.transparencies, 0, 0, 1, least, least,
                                most, most),
              "DrawIcon8");
    };
}

void gdiCalls() {
    const TestWindow window(64, 64, false);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), viewWidth, viewHeight);
    const std::size_t bytes = 4 * viewWidth * viewHeight;
    std::vector<std::uint8_t> from(bytes, 1), to(bytes, 2);
    const Work copy = [&] {
        copyBytes(to.data(), from.data(), bytes);
    };
    const auto draws = [&](const char* name, Kind kind, double scale, int method = 0) {
        setMethod(engines, method);
        const auto side = [scale](long view) {
            return static_cast<long>(std::ceil(view / scale));
        };
        const auto image = makeImage(kind, side(viewWidth), side(viewHeight));
        for (const Engine& engine : engines) {
            engine->put_VisiblePixelMaskEnable(kind == Kind::maskedRange ? VARIANT_TRUE : VARIANT_FALSE);
        }
        row(name, copy, onAll(engines, drawing(image, scale)));
    };
    row("(setting the view's pixels)", copy, {[&] {
            setBytes(to.data(), bytes);
        }});
    draws("8-bit grey 1:1", Kind::grey8, 1);
    draws("16-bit grey 1:1", Kind::grey16, 1);
    draws("range 1:1", Kind::range, 1);
    draws("range 1:1 with mask", Kind::maskedRange, 1);
    draws("colour 1:1", Kind::color, 1);
    draws("8-bit grey x 2.5 nearest", Kind::grey8, 2.5);
    draws("8-bit grey x 3 nearest", Kind::grey8, 3);
    draws("8-bit grey x 2.5 centre", Kind::grey8, 2.5, 1);
    draws("8-bit grey x 0.37", Kind::grey8, 0.37);
    draws("16-bit grey x 2.5", Kind::grey16, 2.5);
    draws("colour x 2.5", Kind::color, 2.5);
    const auto icon = makeImage(Kind::grey8, viewWidth, viewHeight);
    IconMaps opaque([](int) { return 0; }), some([](int) { return 30; }),
        every([](int i) { return i % 101; });
    row("icon over the whole view, opaque", copy, onAll(engines, iconOf(icon, opaque)));
    row("icon over the whole view, 30 %", copy, onAll(engines, iconOf(icon, some)));
    row("icon over the whole view, every weight", copy, onAll(engines, iconOf(icon, every)));
    row("Fill of the view", copy, onAll(engines, [](ITalRenderEngine2* engine) {
            engine->Fill(0, least, least, most, most, RGB(10, 20, 30));
        }));
    __int64 dc = 0;
    engines[0]->GetDrawContext(0, &dc);
    const GdiPicture whole(viewWidth, viewHeight), part(768, 432);
    row("peer: StretchDIBits 1:1, x 2.5", copy,
        {[&] { whole.stretch(reinterpret_cast<HDC>(dc), 1); },
         [&] {
             part.stretch(reinterpret_cast<HDC>(dc), 2.5);
         }});
    engines[0]->ReleaseDrawContext(0, dc);
}

// Small drawings, in units of copying 16 KiB.
void smallCalls() {
    const TestWindow window(64, 64, false);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), viewWidth, viewHeight);
    std::vector<std::uint8_t> from(16384, 1), to(16384, 2);
    const auto icon = makeImage(Kind::grey8, viewWidth, viewHeight);
    const auto small = makeImage(Kind::grey8, 32, 32);
    IconMaps some([](int) { return 30; });
    const Work copy16K = [&] {
        copyBytes(to.data(), from.data(), 16384);
    };
    row("icon of 32 x 32, 30 %", copy16K, onAll(engines, iconOf(small, some)));
    row("clip of 16 x 16 at 1:1", copy16K, onAll(engines, drawing(icon, 1, {100, 100, 116, 116})));
    row("clip of 16 x 16 at x 2.5", copy16K, onAll(engines, drawing(icon, 2.5, {100, 100, 116, 116})));
    row("creating a talxstd image alone", copy16K, {[] {
            ComPtr<ITalImageMemory> memory;
            CoCreateInstance(__uuidof(TalImage8Grey), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory));
        }});
    const auto huge = makeImage(Kind::grey8, 16384, 16384), little = makeImage(Kind::grey8, 256, 256);
    const RECT clip{100, 100, 164, 164};
    row("clip of 64 x 64 of 256 x 256, x 1.5", copy16K, onAll(engines, drawing(little, 1.5, clip)));
    row("clip of 64 x 64 of 16384 x 16384, x 1.5", copy16K, onAll(engines, drawing(huge, 1.5, clip)));
}

// A live picture of 1000 x 700, drawn and shown, beside GDI drawing it to the window itself.
void liveView() {
    constexpr long width = 1000, height = 700;
    const TestWindow window(width, height, true);
    const auto engines = makeEngines(__uuidof(TalGDIRenderEngine), window.get(), width, height);
    const HDC dc = GetDC(window.get());
    for (const double scale : {1.0, 2.5, 0.7}) {
        const auto side = [scale](long view) {
            return static_cast<long>(std::ceil(view / scale));
        };
        const auto image = makeImage(Kind::grey8, side(width), side(height));
        const GdiPicture picture(side(width), side(height));
        char name[64];
        std::snprintf(name, sizeof name, "live view x %.1f / StretchDIBits", scale);
        row(
            name, [&] { picture.stretch(dc, scale); }, onAll(engines, [&](ITalRenderEngine2* engine) {
                drawing(image, scale)(engine);
                engine->RefreshScreen(0, 0, 0, 0, width, height);
                GdiFlush();
            }));
        std::snprintf(name, sizeof name, "  of it RefreshScreen alone");
        row(
            name, [&] { picture.stretch(dc, scale); }, onAll(engines, [&](ITalRenderEngine2* engine) {
                engine->RefreshScreen(0, 0, 0, 0, width, height);
                GdiFlush();
            }));
    }
    ReleaseDC(window.get(), dc);
}

// --- DirectDraw

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

struct BareQuad {
    BareQuad(const BareDirectDraw& bare, long width, long height)
        : target(bare.surface(DDSCAPS_OFFSCREENPLAIN | DDSCAPS_3DDEVICE, width, height)),
          texture(bare.surface(DDSCAPS_TEXTURE | DDSCAPS_VIDEOMEMORY, 32, 32, true)) {
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
        DDSURFACEDESC lock{};
        lock.dwSize = sizeof lock;
        check(texture->Lock(nullptr, &lock, DDLOCK_WAIT, nullptr), "Lock");
        std::memset(lock.lpSurface, 0x80, static_cast<std::size_t>(lock.lPitch) * 32);
        texture->Unlock(nullptr);
        ComPtr<IDirect3DTexture2> face;
        D3DTEXTUREHANDLE handle = 0;
        check(texture->QueryInterface(IID_IDirect3DTexture2, &face), "IDirect3DTexture2");
        check(face->GetHandle(device.Get(), &handle), "GetHandle");
        device->SetRenderState(D3DRENDERSTATE_TEXTUREHANDLE, handle);
        device->SetRenderState(D3DRENDERSTATE_TEXTUREMAPBLEND, D3DTBLEND_DECAL);
        device->SetRenderState(D3DRENDERSTATE_ALPHABLENDENABLE, TRUE);
        device->SetRenderState(D3DRENDERSTATE_SRCBLEND, D3DBLEND_SRCALPHA);
        device->SetRenderState(D3DRENDERSTATE_DESTBLEND, D3DBLEND_INVSRCALPHA);
        device->SetRenderState(D3DRENDERSTATE_ZENABLE, D3DZB_FALSE);
        device->SetRenderState(D3DRENDERSTATE_CULLMODE, D3DCULL_NONE);
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
        device->BeginScene();
        device->DrawPrimitive(D3DPT_TRIANGLESTRIP, D3DVT_TLVERTEX, corners, 4, D3DDP_WAIT | D3DDP_DONOTCLIP);
        device->EndScene();
    }

    ComPtr<IDirectDrawSurface> target;
    ComPtr<IDirectDrawSurface> texture;
    ComPtr<IDirect3DDevice2> device;
    ComPtr<IDirect3DViewport2> viewport;
};

void touch(IDirectDrawSurface* surface) {
    DDSURFACEDESC lock{};
    lock.dwSize = sizeof lock;
    check(surface->Lock(nullptr, &lock, DDLOCK_WAIT, nullptr), "Lock");
    surface->Unlock(nullptr);
}

void directDrawCalls() {
    constexpr long width = 1000, height = 700;
    const TestWindow window(width, height, true);
    const auto engines = makeEngines(__uuidof(TalRenderEngine), window.get(), width, height);
    const BareDirectDraw bare(window.get());
    const BareQuad quad(bare, width, height);

    // Fifty icons in a row, up to the end of the drawing: a lock waits for it.
    const auto small = makeImage(Kind::grey8, 32, 32);
    ComPtr<ITalImage8Grey> icon;
    check(small.As(&icon), "ITalImage8Grey");
    IconMaps some([](int) { return 30; });
    const auto place = [](int i) {
        return std::pair(i % 10 * 90L, i / 10 * 120L);
    };
    row(
        "50 icons / 50 bare textured quads",
        [&] {
            for (int i = 0; i < 50; ++i) {
                quad.draw(place(i).first, place(i).second);
            }
            touch(quad.target.Get());
        },
        onAll(engines, [&](ITalRenderEngine2* engine) {
            for (int i = 0; i < 50; ++i) {
                check(engine->DrawIcon8(0, icon.Get(), &some.colors, &some.transparencies, place(i).first,
                                        place(i).second, 1, least, least, most, most),
                      "DrawIcon8");
            }
            __int64 dc = 0;
            check(engine->GetDrawContext(0, &dc), "GetDrawContext");
            engine->ReleaseDrawContext(0, dc);
        }));

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
        onAll(engines, [&](ITalRenderEngine2* engine) {
            drawing(image, 1)(engine);
            check(engine->RefreshScreen(8, 8, 0, 0, width, height), "RefreshScreen");
        }));
}

} // namespace

int main(int argc, char** argv) {
    check(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), "CoInitializeEx");
    std::string only;
    ComPtr<IUnknown> registered; // keeps the registered DLL loaded
    check(CoCreateInstance(__uuidof(TalGDIRenderEngine), nullptr, CLSCTX_INPROC_SERVER,
                           IID_PPV_ARGS(&registered)),
          "creating the registered engine");
    modules.push_back(GetModuleHandleW(L"talxrend.dll"));
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--only") == 0 && i + 1 < argc) {
            only = argv[++i];
            continue;
        }
        modules.push_back(LoadLibraryA(argv[i]));
        check(modules.back() ? S_OK : E_FAIL, argv[i]);
    }
    const std::pair<const char*, void (*)()> tables[] = {
        {"gdi", gdiCalls}, {"small", smallCalls}, {"live", liveView}, {"directdraw", directDrawCalls}};
    for (const auto& [name, table] : tables) {
        if (only.empty() || only == name) {
            std::printf("\n%-44s %10s %8s%s\n", name, "unit us", "engine",
                        modules.size() > 1 ? "   other" : "");
            table();
        }
    }
    return 0;
}
