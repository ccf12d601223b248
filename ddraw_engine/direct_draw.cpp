// See direct_draw.h.

#include "ddraw_engine/direct_draw.h"

#include <cstdlib>
#include <limits>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// Whether a surface is what was asked for, by what it says of itself: some sizes come out with less memory
// than they need. All of a surface's memory is counted in 31 bits, so that no size computed from it can wrap
// around.
bool holds(const DDSURFACEDESC& description, DWORD width, DWORD height) {
    if (description.dwWidth != width || description.dwHeight != height) {
        return false;
    }
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const std::int64_t rowBytes = std::int64_t{width} * bytesPerPixel(description);
    const std::int64_t pitch = std::abs(std::int64_t{description.lPitch});
    return rowBytes <= pitch && (pitch == 0 || std::int64_t{height} <= most / pitch);
}

} // namespace

HRESULT DirectDrawLibrary::create(ComPtr<IDirectDraw>& directDraw) {
    directDraw.Reset();
    if (!module_) {
        // The system's own, whatever lies beside the program. A ddraw.dll that the program has loaded already
        // is taken instead: the loader knows a library by its name.
        module_.reset(LoadLibraryExW(L"ddraw.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    }
    if (!module_) {
        return lastErrorResult();
    }
    using Create = HRESULT(WINAPI*)(GUID*, IDirectDraw**, IUnknown*);
    const FARPROC entry = GetProcAddress(module_.get(), "DirectDrawCreate");
    if (!entry) {
        return lastErrorResult();
    }
    return reinterpret_cast<Create>(reinterpret_cast<void*>(entry))(nullptr, &directDraw, nullptr);
}

HRESULT createSurface(IDirectDraw* directDraw, DWORD caps, long width, long height,
                      ComPtr<IDirectDrawSurface>& surface) {
    auto description = sizedStructure<DDSURFACEDESC>();
    description.dwFlags = DDSD_CAPS | DDSD_WIDTH | DDSD_HEIGHT;
    description.dwWidth = static_cast<DWORD>(width);
    description.dwHeight = static_cast<DWORD>(height);
    description.ddsCaps.dwCaps = caps;
    HRESULT hr = createSurface(directDraw, description, surface);
    if (FAILED(hr)) {
        return hr;
    }
    auto made = sizedStructure<DDSURFACEDESC>();
    hr = surface->GetSurfaceDesc(&made);
    if (SUCCEEDED(hr) && !holds(made, static_cast<DWORD>(width), static_cast<DWORD>(height))) {
        hr = DDERR_OUTOFMEMORY;
    }
    if (FAILED(hr)) {
        surface.Reset();
    }
    return hr;
}

HRESULT createSurface(IDirectDraw* directDraw, DDSURFACEDESC& description,
                      ComPtr<IDirectDrawSurface>& surface) {
    const HRESULT hr = directDraw->CreateSurface(&description, surface.ReleaseAndGetAddressOf(), nullptr);
    return SUCCEEDED(hr) && !surface ? E_POINTER : hr;
}

void restoreIfLost(IDirectDrawSurface* surface) {
    if (surface->IsLost() == DDERR_SURFACELOST) {
        surface->Restore();
    }
}

HRESULT fillSurface(IDirectDrawSurface* surface, RECT rect, DWORD pixel) {
    restoreIfLost(surface);
    auto effects = sizedStructure<DDBLTFX>();
    effects.dwFillColor = pixel;
    return surface->Blt(&rect, nullptr, nullptr, DDBLT_COLORFILL | DDBLT_WAIT, &effects);
}

HRESULT copySurface(IDirectDrawSurface* destination, RECT destinationRect, IDirectDrawSurface* source,
                    RECT sourceRect) {
    auto effects = sizedStructure<DDBLTFX>();
    return destination->Blt(&destinationRect, source, &sourceRect, DDBLT_WAIT, &effects);
}

} // namespace talx
