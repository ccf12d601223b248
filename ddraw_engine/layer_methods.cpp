// Drawing into the composition surface of the DirectDraw engine, and showing it.

#include "ddraw_engine/surface_lock.h"
#include "ddraw_engine/tal_render_engine.h"
#include "render/system_palette.h"

#include <olectl.h>

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
    return initializedMethod(L"Fill", [&](const MethodFrame& frame) {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return S_OK;
        }
        COLORREF color = 0;
        if (FAILED(OleTranslateColor(Clr, nullptr, &color))) {
            return frame.fail(E_INVALIDARG, IDS_NO_COLOR);
        }
        const DWORD pixel = fillPixel(color);
        if (!composition_) {
            return frame.fail(E_FAIL, IDS_BLT_FAILED);
        }
        const HRESULT hr = fillSurface(composition_.Get(), toRECT(rect), pixel);
        return FAILED(hr) ? frame.fail(hr, IDS_FILL_FAILED) : S_OK;
    });
}

STDMETHODIMP CTalRenderEngine::GetDrawContext(long /*Lyr*/, __int64* phdc) {
    return initializedMethod(L"GetDrawContext", [&](const MethodFrame& frame) {
        if (!phdc) {
            return frame.fail(E_POINTER);
        }
        if (!composition_) {
            return frame.fail(E_FAIL, IDS_GETDC_FAILED);
        }
        restoreIfLost(composition_.Get());
        HDC dc = nullptr;
        const HRESULT hr = composition_->GetDC(&dc);
        if (FAILED(hr) || !dc) {
            composition_->ReleaseDC(dc);
            return frame.fail(FAILED(hr) ? hr : E_FAIL, IDS_GETDC_FAILED);
        }
        *phdc = fromHandle(dc);
        return S_OK;
    });
}

STDMETHODIMP CTalRenderEngine::ReleaseDrawContext(long /*Lyr*/, __int64 Hdc) {
    return initializedMethod(L"ReleaseDrawContext", [&](const MethodFrame&) {
        if (!composition_) {
            return S_OK;
        }
        restoreIfLost(composition_.Get());
        const HRESULT hr = composition_->ReleaseDC(toHandle<HDC>(Hdc));
        return FAILED(hr) ? E_FAIL : S_OK; // without error information
    });
}

STDMETHODIMP CTalRenderEngine::RefreshScreen(long Sx, long Sy, long Ulx, long Uly, long Lrx, long Lry) {
    return initializedMethod(L"RefreshScreen", [&](const MethodFrame& frame) {
        const Rect rect = state_.clip(Ulx, Uly, Lrx, Lry);
        if (rect.empty()) {
            return S_OK;
        }
        // Lost surfaces are reported, not restored: there would be nothing to show.
        const HRESULT hr =
            copySurface(required(primary_), toRECT(moved(rect, Sx, Sy)), composition_.Get(), toRECT(rect));
        return FAILED(hr) ? frame.fail(hr, IDS_BLT_FAILED) : S_OK;
    });
}

HRESULT CTalRenderEngine::withBits(const std::function<HRESULT(const LayerBits&)>& draw) {
    const SurfaceLock lock(composition_.Get());
    if (FAILED(lock.result())) {
        return lock.result();
    }
    // Nothing is drawn on a surface whose pixels have another size than the screen had when its format was
    // read.
    const bool asScreen = lock.bytesPerPixel() == bytesPerPixel(screenFormat_);
    return draw({lock.bits(), lock.pitch(), lock.width(), lock.height(),
                 asScreen ? screenFormat_ : LayerFormat::Unspecified});
}

HRESULT CTalRenderEngine::blendIconInHardware(const IconBlendJob& job) {
    return iconBlender_.blend({directDraw_.Get(), direct3d_.Get(), composition_.Get()}, job);
}

DWORD CTalRenderEngine::fillPixel(COLORREF color) const {
    return screenFormat_ == LayerFormat::Pal8 ? nearestPaletteIndex(gdiPalette_.get(), color)
                                              : toPixel(screenFormat_, fromColorRef(color));
}

} // namespace talx
