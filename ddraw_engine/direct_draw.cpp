// See direct_draw.h.

#include "ddraw_engine/direct_draw.h"

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// The failure of the last platform call; never a success.
HRESULT lastErrorResult() {
    const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

} // namespace

HRESULT DirectDrawLibrary::create(ComPtr<IDirectDraw>& directDraw) {
    directDraw.Reset();
    if (!module_) {
        module_.reset(LoadLibraryW(L"ddraw.dll"));
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
    return createSurface(directDraw, description, surface);
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
