// Drawing into the composition surface of the DirectDraw engine, and showing it.

#include "ddraw_engine/surface_lock.h"
#include "ddraw_engine/tal_render_engine.h"
#include "render/ole_color.h"
#include "render/system_palette.h"

namespace talx {

namespace {

Rect moved(const Rect& r, long x, long y) {
    const auto add = [](std::int32_t a, long b) {
        return saturate(std::int64_t{a} + b);
    };
    return {add(r.left, x), add(r.top, y), add(r.right, x), add(r.bottom, y)};
}

} // namespace

STDMETHODIMP CTalRenderEngine::Fill(long /*Lyr*/, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) {
    return initializedMethod(L"Fill", [&] {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return;
        }
        const DWORD pixel = fillPixel(translateColor(Clr));
        check(composition_ ? S_OK : E_FAIL, IDS_BLT_FAILED);
        check(fillSurface(composition_.Get(), toRECT(rect), pixel), IDS_FILL_FAILED);
    });
}

STDMETHODIMP CTalRenderEngine::GetDrawContext(long /*Lyr*/, __int64* phdc) {
    return initializedMethod(L"GetDrawContext", [&] {
        check(phdc ? S_OK : E_POINTER);
        check(composition_ ? S_OK : E_FAIL, IDS_GETDC_FAILED);
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
        return FAILED(hr) ? E_FAIL : S_OK; // without error information
    });
}

STDMETHODIMP CTalRenderEngine::RefreshScreen(long Sx, long Sy, long Ulx, long Uly, long Lrx, long Lry) {
    return initializedMethod(L"RefreshScreen", [&] {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return;
        }
        // Lost surfaces are reported, not restored: there would be nothing to show.
        check(copySurface(required(primary_), toRECT(moved(rect, Sx, Sy)), composition_.Get(), toRECT(rect)),
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
