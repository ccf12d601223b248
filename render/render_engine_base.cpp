// The shared methods that hold no drawing: extent, layers, events, and the entrances to drawing.

#include "render/render_engine_base.h"

#include "render/draw_icon.h"
#include "render/draw_image.h"
#include "render/system_palette.h"

namespace talx {

STDMETHODIMP RenderEngineBase::DumpInfo(BSTR*) {
    return bare(E_NOTIMPL);
}

STDMETHODIMP RenderEngineBase::get_Initialized(VARIANT_BOOL* pVal) {
    return method(L"get_Initialized", [&] {
        require(pVal, E_POINTER);
        *pVal = state().initialized ? VARIANT_TRUE : VARIANT_FALSE;
    });
}

STDMETHODIMP RenderEngineBase::GetExtent(long* Width, long* Height) {
    return method(L"GetExtent", [&] {
        require(Width && Height, E_POINTER);
        *Width = state().width;
        *Height = state().height;
    });
}

STDMETHODIMP RenderEngineBase::BeginLayerUpdate(long Lyr, long L, long T, long R, long B) {
    const auto alive = holdItself();
    state().layers.raiseBelow(Lyr, state().clip(L, T, R, B));
    return S_OK;
}

STDMETHODIMP RenderEngineBase::EndLayerUpdate(long Lyr, long L, long T, long R, long B) {
    const auto alive = holdItself();
    state().layers.raiseAbove(Lyr, state().clip(L, T, R, B));
    return S_OK;
}

STDMETHODIMP RenderEngineBase::put_Layers(long value) {
    state().layers.setCount(value);
    return S_OK;
}

STDMETHODIMP RenderEngineBase::get_Layers(long* NumLayers) {
    if (!NumLayers) {
        return bare(E_POINTER);
    }
    *NumLayers = state().layers.count();
    return S_OK;
}

STDMETHODIMP RenderEngineBase::AdviseRenderEvents(ITalRenderEngineEvents* EventSink) {
    if (!EventSink) {
        return bare(E_INVALIDARG);
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
    return initializedMethod(L"DrawImage", [&] {
        drawImage(*this, state(), Image, {Sx, Sy, Scale, {L, T, R, B}});
    });
}

STDMETHODIMP RenderEngineBase::DrawIcon8(long, ITalImage8Grey* IconData, SAFEARRAY** ColorMap,
                                         SAFEARRAY** TransparencyMap, double X, double Y, double Scale,
                                         long L, long T, long R, long B) {
    return initializedMethod(L"DrawIcon8", [&] {
        drawIcon(*this, state(), IconData, ColorMap ? *ColorMap : nullptr,
                 TransparencyMap ? *TransparencyMap : nullptr, {X, Y, Scale, {L, T, R, B}});
    });
}

void RenderEngineBase::updatePaletteIndices() {
    state().colors.grey8Map.updatePalette(
        [palette = palette()](COLORREF color) { return nearestPaletteIndex(palette, color); });
}

} // namespace talx
