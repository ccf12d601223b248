// See direct_draw.h.

#include "ddraw_engine/direct_draw.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// Whether a surface is as large as was asked for, by what it says of itself: some sizes come out with less
// memory than they need. Without a pitch, a lock will have to tell.
bool holds(const DDSURFACEDESC& description, DWORD width, DWORD height) {
    const bool hasPitch = (description.dwFlags & DDSD_PITCH) != 0;
    return description.dwWidth >= width && description.dwHeight >= height &&
           (!hasPitch || holdsRows(description));
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

bool holdsRows(const DDSURFACEDESC& description) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const std::int64_t pitch = std::abs(std::int64_t{description.lPitch});
    return std::int64_t{description.dwWidth} * bytesPerPixel(description) <= pitch &&
           std::int64_t{description.dwHeight} <= most / std::max<std::int64_t>(pitch, 1);
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
