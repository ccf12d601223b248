#define CINTERFACE // interfaces as tables of functions: only what the engine needs is filled in
#include <initguid.h>
#include <windows.h>

#include <ddraw.h>

#include <d3d.h>

#include "tests/ddraw/fake_direct_draw.h"

#include <sstream>

namespace talx::test {

namespace {

FakeDisplay* current = nullptr;

FakeObject& of(auto* pointer) {
    return *reinterpret_cast<FakeObject*>(pointer);
}

void print(std::ostream& out, const RECT& r) {
    out << std::dec << " (" << r.left << "," << r.top << "," << r.right << "," << r.bottom << ")" << std::hex;
}
template <class Argument>
void print(std::ostream& out, Argument argument) {
    if constexpr (requires { argument->dwSize; }) {
        EXPECT_EQ(sizeof *argument, argument->dwSize);
    }
    if constexpr (std::is_same_v<Argument, RECT*>) {
        argument ? print(out, *argument) : void(out << " all");
    } else if constexpr (requires { argument->lpVtbl; }) {
        out << " " << (argument ? of(argument).name : "none");
    } else if constexpr (requires { argument->dwFillColor; }) {
        out << " " << argument->dwFillColor;
    } else if constexpr (requires { argument->ddsCaps; }) {
        print(out, RECT{0, 0, LONG(argument->dwWidth), LONG(argument->dwHeight)});
        out << " caps " << argument->ddsCaps.dwCaps;
    } else if constexpr (std::is_same_v<Argument, GUID>) {
        out << " " << argument.Data1;
    } else if constexpr (std::is_same_v<Argument, HWND>) {
        out << (IsWindow(argument) ? " window" : " no window");
    } else if constexpr (std::is_integral_v<Argument> || std::is_enum_v<Argument> ||
                         std::is_same_v<Argument, HDC>) {
        out << " " << argument;
    }
}

HRESULT record(FakeDisplay& display, const std::string& call) {
    display.calls.push_back(call);
    const bool refused = std::any_of(display.refuse.begin(), display.refuse.end(),
                                     [&](const auto& beginning) { return call.starts_with(beginning); });
    return display.fails(call) || refused ? FakeDisplay::failure : S_OK;
}
template <class Interface, class... Arguments>
HRESULT record(Interface* self, const std::string& method, Arguments... arguments) {
    std::ostringstream out;
    out << std::hex << of(self).name << "." << method;
    (print(out, arguments), ...);
    return record(of(self).display, out.str());
}

// A method that does nothing else.
template <FunctionName name, class Interface, class... Arguments>
HRESULT WINAPI recorded(Interface* self, Arguments... arguments) {
    return record(self, name.text, arguments...);
}

template <class Interface>
ULONG WINAPI release(Interface* self) {
    FakeObject& object = of(self);
    const ULONG left = --object.references;
    if (left == 0) {
        bool intact = true;
        for (int i = 0; i < static_cast<int>(object.memory.size()); ++i) {
            const int x = i % object.pitch(), y = i / object.pitch();
            intact &= (x < object.width * object.bytes && y < object.height) || object.memory[i] == 0xCD;
        }
        EXPECT_TRUE(intact) << object.name << " was written beside its pixels";
        --object.display.objects;
        object.display.surfaces.erase(object.name);
        object.display.calls.push_back("~" + object.name);
        delete &object;
    }
    return left;
}

HRESULT WINAPI unexpected() {
    ADD_FAILURE() << "a method that the engine should not need";
    return E_NOTIMPL;
}

// Puts a new object into result unless the call that makes it failed. fill sets the methods that are needed.
template <class Interface, class Fill>
HRESULT make(HRESULT hr, const std::string& name, Interface** result, Fill fill) {
    static const auto table = [&] {
        std::remove_cvref_t<decltype(*Interface::lpVtbl)> t;
        std::fill_n(reinterpret_cast<void**>(&t), sizeof t / sizeof(void*),
                    reinterpret_cast<void*>(&unexpected));
        t.AddRef = [](Interface* self) {
            return ++of(self).references;
        };
        t.Release = release;
        fill(t);
        return t;
    }();
    if (SUCCEEDED(hr) && current->yieldNothing != name) {
        *result = reinterpret_cast<Interface*>(new FakeObject{&table, *current, name});
        ++current->objects;
    }
    return hr;
}

void paint(FakeObject& surface, const RECT& r, auto&& source) {
    for (LONG i = 0; i < surface.width * surface.height; ++i) {
        const POINT p{i % surface.width, i / surface.width};
        if (PtInRect(&r, p)) {
            std::memcpy(surface.at(p.x, p.y), source(p.x, p.y), surface.bytes);
        }
    }
}

HRESULT WINAPI blt(IDirectDrawSurface* self, RECT* to, IDirectDrawSurface* from, RECT* part, DWORD flags,
                   DDBLTFX* fx) {
    const HRESULT hr = record(self, "Blt", to, from, part, flags, fx);
    const bool fill = flags & DDBLT_COLORFILL;
    if (FAILED(hr) || (!fill && !from)) {
        return FAILED(hr) ? hr : DDERR_INVALIDPARAMS;
    }
    if (of(self).lost || (from && of(from).lost)) {
        return FakeDisplay::surfaceLost;
    }
    paint(of(self), *to, [&](int x, int y) -> const void* {
        return fill ? static_cast<void*>(&fx->dwFillColor)
                    : of(from).at(x - to->left + part->left, y - to->top + part->top);
    });
    return S_OK;
}

// GetSurfaceDesc, which also knows lost surfaces, and Lock.
HRESULT describe(HRESULT hr, FakeObject& surface, DDSURFACEDESC& d) {
    const auto& [lessWidth, lessHeight, pitch] = surface.display.lie;
    d.dwWidth = static_cast<DWORD>(surface.width - lessWidth);
    d.dwHeight = static_cast<DWORD>(surface.height - lessHeight);
    d.dwFlags = DDSD_WIDTH | DDSD_HEIGHT | DDSD_PITCH;
    d.lPitch = pitch ? pitch : surface.pitch();
    d.ddpfPixelFormat.dwRGBBitCount = surface.display.bits;
    d.lpSurface = FAILED(hr) ? nullptr : surface.memory.data();
    return hr;
}

const auto surfaceMethods = [](auto& t) {
    t.QueryInterface = [](IDirectDrawSurface* self, REFIID iid, void** texture) {
        return make(record(self, "QueryInterface", iid), "handle",
                    reinterpret_cast<IDirect3DTexture2**>(texture), [](auto& t) {
                        t.GetHandle = [](IDirect3DTexture2* self, IDirect3DDevice2* device, DWORD* handle) {
                            *handle = static_cast<DWORD>(of(self).display.textures.size()); // the newest
                            return record(self, "GetHandle", device);
                        };
                    });
    };
    t.Blt = blt;
    t.SetClipper = recorded<"SetClipper">;
    t.SetPalette = recorded<"SetPalette">;
    t.ReleaseDC = recorded<"ReleaseDC">;
    t.GetPixelFormat = [](IDirectDrawSurface* self, DDPIXELFORMAT* format) {
        format->dwRGBBitCount = of(self).display.bits;
        format->dwRBitMask = of(self).display.redMask;
        return record(self, "GetPixelFormat", format);
    };
    t.IsLost = [](IDirectDrawSurface* self) {
        return of(self).lost ? FakeDisplay::surfaceLost : DD_OK;
    };
    t.Restore = [](IDirectDrawSurface* self) {
        of(self).lost = false;
        return record(self, "Restore");
    };
    t.GetSurfaceDesc = [](IDirectDrawSurface* self, DDSURFACEDESC* d) {
        return describe(record(self, "GetSurfaceDesc"), of(self), *d);
    };
    t.Lock = [](IDirectDrawSurface* self, RECT* rect, DDSURFACEDESC* d, DWORD flags, HANDLE) {
        const HRESULT hr = describe(record(self, "Lock", rect, d, flags), of(self), *d);
        const HRESULT result = SUCCEEDED(hr) && of(self).lost ? FakeDisplay::surfaceLost : hr;
        of(self).locked = SUCCEEDED(result) ? d->lpSurface : nullptr;
        return result;
    };
    t.Unlock = [](IDirectDrawSurface* self, void* bits) {
        EXPECT_EQ(of(self).locked, bits) << "unlocked with another address";
        return record(self, "Unlock");
    };
    t.GetDC = [](IDirectDrawSurface* self, HDC* dc) {
        *dc = reinterpret_cast<HDC>(of(self).display.context);
        return record(self, "GetDC");
    };
};

const auto deviceMethods = [](auto& t) {
    t.GetCaps = [](IDirect3DDevice2* self, D3DDEVICEDESC* hardware, D3DDEVICEDESC* software) {
        hardware->dwMaxTextureWidth = 64;
        hardware->dwMaxTextureHeight = software->dwMaxTextureWidth = 256;
        return record(self, "GetCaps", hardware, software);
    };
    t.AddViewport = recorded<"AddViewport">;
    t.SetCurrentViewport = recorded<"SetCurrentViewport">;
    t.BeginScene = recorded<"BeginScene">;
    t.SetRenderState = [](IDirect3DDevice2* self, D3DRENDERSTATETYPE type, DWORD value) {
        const HRESULT hr = record(self, "SetRenderState", type, value);
        DWORD& texture = of(self).display.texture;
        texture = SUCCEEDED(hr) && type == D3DRENDERSTATE_TEXTUREHANDLE ? value : texture;
        return hr;
    };
    t.DrawPrimitive = [](IDirect3DDevice2* self, D3DPRIMITIVETYPE type, D3DVERTEXTYPE vertexType,
                         void* vertices, DWORD count, DWORD flags) {
        const HRESULT hr = record(self, "DrawPrimitive", type, vertexType, count, flags);
        const auto* v = static_cast<D3DTLVERTEX*>(vertices);
        const RECT r{LONG(v[0].sx + 0.5f), LONG(v[0].sy + 0.5f), LONG(v[3].sx + 0.5f), LONG(v[3].sy + 0.5f)};
        of(self).display.scene = FAILED(hr) ? RECT{} : r;
        return hr;
    };
    // Blends the texture, unless it fails.
    t.EndScene = [](IDirect3DDevice2* self) {
        const HRESULT hr = record(self, "EndScene");
        FakeDisplay& display = of(self).display;
        FakeObject& buffer = *display.surfaces.at("buffer");
        const RECT r = std::exchange(display.scene, {});
        EXPECT_TRUE(display.texture || IsRectEmpty(&r)) << "drawn without a texture";
        paint(buffer, FAILED(hr) ? RECT{} : r, [&, mixed = std::uint32_t{}](int x, int y) mutable {
            const BYTE* const texel = display.textures.at(display.texture - 1)->at(x - r.left, y - r.top);
            for (int i = 0; i < 3; ++i) {
                const int sum = texel[i] * texel[3] + buffer.at(x, y)[i] * (255 - texel[3]);
                reinterpret_cast<BYTE*>(&mixed)[i] = static_cast<BYTE>(sum / 255);
            }
            return &mixed;
        });
        return hr;
    };
};

const auto direct3dMethods = [](auto& t) {
    t.CreateDevice = [](IDirect3D2* self, REFCLSID id, IDirectDrawSurface* target,
                        IDirect3DDevice2** device) {
        return make(record(self, "CreateDevice", id, target), "device", device, deviceMethods);
    };
    t.CreateViewport = [](IDirect3D2* self, IDirect3DViewport2** viewport, IUnknown*) {
        return make(record(self, "CreateViewport"), "viewport", viewport,
                    [](auto& t) { t.SetViewport2 = recorded<"SetViewport2">; });
    };
};

const auto directDrawMethods = [](auto& t) {
    t.QueryInterface = [](IDirectDraw* self, REFIID iid, void** direct3d) {
        return make(record(self, "QueryInterface", iid), "direct3d", reinterpret_cast<IDirect3D2**>(direct3d),
                    direct3dMethods);
    };
    t.SetCooperativeLevel = recorded<"SetCooperativeLevel">;
    t.CreateClipper = [](IDirectDraw* self, DWORD flags, IDirectDrawClipper** clipper, IUnknown*) {
        return make(record(self, "CreateClipper", flags), "clipper", clipper,
                    [](auto& t) { t.SetHWnd = recorded<"SetHWnd">; });
    };
    t.CreatePalette = [](IDirectDraw* self, DWORD flags, PALETTEENTRY* entries, IDirectDrawPalette** palette,
                         IUnknown*) {
        std::copy_n(entries, 256, of(self).display.palette.begin());
        return make(record(self, "CreatePalette", flags), "palette", palette, [](auto&) {});
    };
    t.CreateSurface = [](IDirectDraw* self, DDSURFACEDESC* d, IDirectDrawSurface** result, IUnknown*) {
        FakeDisplay& display = of(self).display;
        const DWORD caps = d->ddsCaps.dwCaps;
        const std::string name = caps & DDSCAPS_PRIMARYSURFACE      ? "primary"
                                 : caps & DDSCAPS_TEXTURE           ? "texture"
                                 : display.surfaces.count("buffer") ? "second"
                                                                    : "buffer";
        const HRESULT recorded = record(self, "CreateSurface " + name, d);
        const bool tooLarge = d->dwWidth > 4096 || d->dwHeight > 4096; // below 0, too
        const HRESULT hr = make(tooLarge ? DDERR_OUTOFMEMORY : recorded, name, result, surfaceMethods);
        if (SUCCEEDED(hr) && *result) {
            FakeObject& surface = *(display.surfaces[name] = &of(*result));
            surface.lost = display.bornLost;
            surface.width = static_cast<int>(d->dwWidth);
            surface.height = static_cast<int>(d->dwHeight);
            surface.bytes = static_cast<int>(display.bits + 1) / 8;
            name == "texture" ? display.textures.push_back(&surface) : void();
            surface.memory.assign(surface.pitch() * (d->dwHeight + 1), 0xCD);
        }
        return hr;
    };
};

HRESULT WINAPI create(GUID*, IDirectDraw** directDraw, IUnknown*) {
    return make(record(*current, "DirectDrawCreate"), "directdraw", directDraw, directDrawMethods);
}

} // namespace

FakeDisplay::FakeDisplay(HMODULE module)
    : hook_(module, [this](HMODULE library, LPCSTR name) {
          return std::string("DirectDrawCreate") == name
                     ? reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&create))
                     : hook_.original(library, name);
      }) {
    current = this;
}

bool FakeDisplay::called(const std::string& beginning) const {
    return std::any_of(calls.begin(), calls.end(),
                       [&](const auto& call) { return call.starts_with(beginning); });
}

} // namespace talx::test
