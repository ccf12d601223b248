// DirectDraw as the engine uses it: the library loaded at first use, and the few steps that are taken on
// surfaces in more than one place. A step answers DirectDraw's own HRESULT: what it means is the caller's to
// say.
#pragma once

#include "com/failure.h"
#include "render/win_types.h"

#include <ddraw.h>
#include <wrl/client.h>

#include <memory>
#include <type_traits>

namespace talx {

// ddraw.dll. It must outlive every object that it created.
class DirectDrawLibrary {
public:
    // Makes the DirectDraw object of the default display. Fails where the library or its entry is missing,
    // and as DirectDrawCreate does.
    HRESULT create(Microsoft::WRL::ComPtr<IDirectDraw>& directDraw);

private:
    struct Unloader {
        void operator()(HMODULE module) const { FreeLibrary(module); }
    };
    std::unique_ptr<std::remove_pointer_t<HMODULE>, Unloader> module_;
};

// The object that a reference holds. A null reference throws _com_error(E_POINTER).
template <class Interface>
[[nodiscard]] Interface* nonNull(const Microsoft::WRL::ComPtr<Interface>& reference) {
    if (!reference) {
        raise(E_POINTER);
    }
    return reference.Get();
}

// Zeroed but for the size that DirectDraw asks for.
template <class Structure>
[[nodiscard]] Structure sizedStructure() {
    Structure result{};
    result.dwSize = sizeof(Structure);
    return result;
}

// Bytes of a pixel of a described surface; 15 bits are 2 bytes.
[[nodiscard]] inline int bytesPerPixel(const DDSURFACEDESC& description) {
    return static_cast<int>((description.ddpfPixelFormat.dwRGBBitCount + 1) / 8);
}

// Whether a described surface's pitch holds its rows. All of its memory is counted in 31 bits, so that no
// size computed from it can wrap around.
[[nodiscard]] bool holdsRows(const DDSURFACEDESC& description);

// Makes a surface as described. A success without a surface counts as E_POINTER.
HRESULT createSurface(IDirectDraw* directDraw, DDSURFACEDESC& description,
                      Microsoft::WRL::ComPtr<IDirectDrawSurface>& surface);

// Makes a surface in the screen's pixel format. The size is handed on as it comes; DDERR_OUTOFMEMORY for a
// surface that comes out smaller.
HRESULT createSurface(IDirectDraw* directDraw, DWORD caps, long width, long height,
                      Microsoft::WRL::ComPtr<IDirectDrawSurface>& surface);

// Gives a lost surface its memory back; its pixels are then undefined.
void restoreIfLost(IDirectDrawSurface* surface);

// Fills a rectangle with a pixel value, restoring the surface first if it is lost.
HRESULT fillSurface(IDirectDrawSurface* surface, RECT rect, DWORD pixel);

// Copies a rectangle of one surface to a rectangle of the same size on another.
HRESULT copySurface(IDirectDrawSurface* destination, RECT destinationRect, IDirectDrawSurface* source,
                    RECT sourceRect);

} // namespace talx
