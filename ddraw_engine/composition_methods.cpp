// Drawing into the composition surface of the DirectDraw engine, and showing it.

#include "ddraw_engine/surface_lock.h"
#include "ddraw_engine/tal_render_engine.h"
#include "render/ole_color.h"
#include "render/system_palette.h"

#include <limits>

namespace talx {

namespace {

// A rectangle of the view at its place on the screen. It keeps its size: a place that 32 bits do not count is
// held where the rectangle still ends within them.
Rect moved(const Rect& r, long x, long y) {
    const auto start = [](std::int32_t edge, long by, std::int64_t size) {
        constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
        return saturate(std::min(std::int64_t{edge} + by, most - size));
    };
    const Extent size = r.extent();
    const std::int32_t left = start(r.left, x, size.width);
    const std::int32_t top = start(r.top, y, size.height);
    return {left, top, left + size.width, top + size.height};
}

} // namespace

STDMETHODIMP CTalRenderEngine::Fill(long /*Lyr*/, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) {
    return initializedMethod(L"Fill", [&] {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return;
        }
        const DWORD pixel = fillPixel(translateColor(Clr));
        require(composition_ != nullptr, E_FAIL, IDS_BLT_FAILED);
        check(fillSurface(composition_.Get(), toRECT(rect), pixel), IDS_FILL_FAILED);
    });
}

STDMETHODIMP CTalRenderEngine::GetDrawContext(long /*Lyr*/, __int64* phdc) {
    return initializedMethod(L"GetDrawContext", [&] {
        require(phdc, E_POINTER);
        require(composition_ != nullptr, E_FAIL, IDS_GETDC_FAILED);
        restoreIfLost(composition_.Get());
        HDC dc = nullptr;
        const HRESULT hr = composition_->GetDC(&dc);
        if (FAILED(hr) || !dc) {
            composition_->ReleaseDC(dc);
            check(FAILED(hr) ? hr : E_FAIL, IDS_GETDC_FAILED);
        }
        *phdc = fromHandle(dc);
    });
}

STDMETHODIMP CTalRenderEngine::ReleaseDrawContext(long /*Lyr*/, __int64 Hdc) {
    return initializedMethod(L"ReleaseDrawContext", [&] {
        if (!composition_) {
            return S_OK;
        }
        restoreIfLost(composition_.Get());
        const HRESULT hr = composition_->ReleaseDC(toHandle<HDC>(Hdc));
        return FAILED(hr) ? E_FAIL : S_OK; // bare
    });
}

STDMETHODIMP CTalRenderEngine::RefreshScreen(long Sx, long Sy, long Ulx, long Uly, long Lrx, long Lry) {
    return initializedMethod(L"RefreshScreen", [&] {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return;
        }
        require(composition_ != nullptr, E_INVALIDARG, IDS_BLT_FAILED);
        // Lost surfaces are reported, not restored: there would be nothing to show.
        check(copySurface(nonNull(primary_), toRECT(moved(rect, Sx, Sy)), composition_.Get(), toRECT(rect)),
              IDS_BLT_FAILED);
    });
}

void CTalRenderEngine::withBits(FunctionRef<void(const BufferBits&)> draw) {
    const SurfaceLock lock(composition_.Get());
    check(lock.result());
    // Nothing is drawn on a surface whose pixels have another size than the screen had when its format was
    // read.
    const bool asScreen = lock.bytesPerPixel() == bytesPerPixel(screenFormat_);
    draw({lock.bits(), lock.pitch(), lock.extent(), asScreen ? screenFormat_ : PixelFormat::Unspecified});
}

bool CTalRenderEngine::blendIconInHardware(const IconBlendJob& job) {
    return iconBlender_.blend({directDraw_.Get(), direct3d_.Get(), composition_.Get()}, job);
}

DWORD CTalRenderEngine::fillPixel(COLORREF color) const {
    return screenFormat_ == PixelFormat::Pal8 ? nearestPaletteIndex(gdiPalette_.get(), color)
                                              : toPixel(screenFormat_, fromColorRef(color));
}

} // namespace talx
