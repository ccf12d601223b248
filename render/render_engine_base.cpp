// The shared methods that hold no drawing: extent, layers, events, and the entrances to drawing.

#include "render/render_engine_base.h"

#include "render/draw_icon.h"
#include "render/draw_image.h"
#include "render/system_palette.h"

namespace talx {

STDMETHODIMP RenderEngineBase::DumpInfo(BSTR*) {
    return E_NOTIMPL;
}

STDMETHODIMP RenderEngineBase::get_Initialized(VARIANT_BOOL* pVal) {
    return method(L"get_Initialized", [&](const MethodFrame& frame) {
        if (!pVal) {
            return frame.fail(E_POINTER);
        }
        *pVal = state().initialized ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    });
}

STDMETHODIMP RenderEngineBase::GetExtent(long* Width, long* Height) {
    return method(L"GetExtent", [&](const MethodFrame& frame) {
        if (!Width || !Height) {
            return frame.fail(E_POINTER);
        }
        *Width = state().width;
        *Height = state().height;
        return S_OK;
    });
}

STDMETHODIMP RenderEngineBase::BeginLayerUpdate(long Lyr, long L, long T, long R, long B) {
    return method(L"BeginLayerUpdate", [&](const MethodFrame&) {
        state().layers.raiseBelow(Lyr, state().clip(L, T, R, B));
        return S_OK;
    });
}

STDMETHODIMP RenderEngineBase::EndLayerUpdate(long Lyr, long L, long T, long R, long B) {
    return method(L"EndLayerUpdate", [&](const MethodFrame&) {
        state().layers.raiseAbove(Lyr, state().clip(L, T, R, B));
        return S_OK;
    });
}

STDMETHODIMP RenderEngineBase::put_Layers(long value) {
    state().layers.setCount(value);
    return S_OK;
}

STDMETHODIMP RenderEngineBase::get_Layers(long* NumLayers) {
    if (!NumLayers) {
        return E_POINTER;
    }
    *NumLayers = state().layers.count();
    return S_OK;
}

STDMETHODIMP RenderEngineBase::AdviseRenderEvents(ITalRenderEngineEvents* EventSink) {
    if (!EventSink) {
        return E_INVALIDARG;
    }
    state().layers.setSink(EventSink);
    return S_OK;
}

STDMETHODIMP RenderEngineBase::UnAdvise() {
    state().layers.setSink(nullptr);
    return S_OK;
}

STDMETHODIMP RenderEngineBase::DrawImage(long, ITalImage* Image, long Sx, long Sy, double Scale, long L,
                                         long T, long R, long B, OLE_COLOR) {
    return initializedMethod(L"DrawImage", [&](const MethodFrame& frame) {
        const HRESULT hr = drawImage(*this, state(), Image, {Sx, Sy, Scale, {L, T, R, B}});
        return FAILED(hr) ? frame.fail(hr) : S_OK;
    });
}

STDMETHODIMP RenderEngineBase::DrawIcon8(long, ITalImage8Grey* IconData, SAFEARRAY** ColorMap,
                                         SAFEARRAY** TransparencyMap, double X, double Y, double Scale,
                                         long L, long T, long R, long B) {
    return initializedMethod(L"DrawIcon8", [&](const MethodFrame& frame) {
        const HRESULT hr =
            drawIcon(*this, state(), IconData, ColorMap ? *ColorMap : nullptr,
                     TransparencyMap ? *TransparencyMap : nullptr, {X, Y, Scale, {L, T, R, B}});
        return FAILED(hr) ? frame.fail(hr) : S_OK;
    });
}

void RenderEngineBase::updateColorLookup() {
    state().colors.grey8Map.updatePalette(
        [palette = palette()](COLORREF color) { return nearestPaletteIndex(palette, color); });
}

} // namespace talx
