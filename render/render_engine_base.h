// The methods of the engine interface that are the same on both engines.
#pragma once

#include "com/error_codes.h"
#include "com/method_frame.h"
#include "render/composition_buffer.h"
#include "render/engine_state.h"

#include <wrl/client.h>

namespace talx {

// An engine derives from it, is its composition buffer, holds an EngineState, and adds Initialize, SetExtent,
// Fill, the draw context, RefreshScreen and PaletteChange.
class RenderEngineBase : public ITalRenderEngine2, protected CompositionBuffer {
public:
    STDMETHOD(DumpInfo)(BSTR* info) override;
    STDMETHOD(get_Initialized)(VARIANT_BOOL* pVal) override;
    STDMETHOD(GetExtent)(long* Width, long* Height) override;
    STDMETHOD(BeginLayerUpdate)(long Lyr, long L, long T, long R, long B) override;
    STDMETHOD(EndLayerUpdate)(long Lyr, long L, long T, long R, long B) override;
    STDMETHOD(put_Layers)(long value) override;
    STDMETHOD(get_Layers)(long* NumLayers) override;
    STDMETHOD(AdviseRenderEvents)(ITalRenderEngineEvents* EventSink) override;
    STDMETHOD(UnAdvise)() override;

    STDMETHOD(DrawImage)
    (long Lyr, ITalImage* Image, long Sx, long Sy, double Scale, long L, long T, long R, long B,
     OLE_COLOR PassColor) override;
    STDMETHOD(DrawIcon8)
    (long Layer, ITalImage8Grey* IconData, SAFEARRAY** ColorMap, SAFEARRAY** TransparencyMap, double X,
     double Y, double Scale, long L, long T, long R, long B) override;

    STDMETHOD(get_Image8GreyColorMap)(unsigned char GreyVal, OLE_COLOR* pColor) override;
    STDMETHOD(put_Image8GreyColorMap)(unsigned char GreyVal, OLE_COLOR value) override;
    STDMETHOD(get_Image16GreyColorMap)(SAFEARRAY** pVal) override;
    STDMETHOD(put_Image16GreyColorMap)(SAFEARRAY** value) override;
    STDMETHOD(ClearImage16GreyColorMap)() override;
    STDMETHOD(UnsetColorMaps)() override;
    STDMETHOD(get_Image8GreyWholeColorMap)(SAFEARRAY** pVal) override;
    STDMETHOD(put_Image8GreyWholeColorMap)(SAFEARRAY** value) override;
    STDMETHOD(ClearImage8GreyColorMap)() override;
    STDMETHOD(get_Image16RangeColorMap)(SAFEARRAY** pVal) override;
    STDMETHOD(put_Image16RangeColorMap)(SAFEARRAY** value) override;
    STDMETHOD(ClearImage16RangeColorMap)() override;
    STDMETHOD(get_VisiblePixelMaskEnable)(VARIANT_BOOL* pShowMask) override;
    STDMETHOD(put_VisiblePixelMaskEnable)(VARIANT_BOOL value) override;
    STDMETHOD(get_VisiblePixelMaskColor)(OLE_COLOR* pMaskColor) override;
    STDMETHOD(put_VisiblePixelMaskColor)(OLE_COLOR value) override;

protected:
    explicit RenderEngineBase(const CLSID& clsid) : clsid_(clsid) {}
    ~RenderEngineBase() = default;

    // Held by the engine itself, so that it is destroyed in the engine's own order.
    [[nodiscard]] virtual EngineState& state() = 0;

    // Keeps the engine alive for the length of a method: the owner's code, which some methods call, may
    // release it.
    [[nodiscard]] Microsoft::WRL::ComPtr<IUnknown> holdItself() {
        return static_cast<ITalRenderEngine2*>(this);
    }

    // Runs a method's body in its frame.
    template <class Body>
    HRESULT method(const wchar_t* name, Body&& body) {
        const auto alive = holdItself();
        return MethodFrame({__uuidof(ITalRenderEngine), clsid_}, name).run(std::forward<Body>(body));
    }
    // The same for a method that needs an initialised engine.
    template <class Body>
    HRESULT initializedMethod(const wchar_t* name, Body&& body) {
        return method(name, [&] {
            require(state().initialized, E_TAL_UNINITIALIZED);
            return std::forward<Body>(body)();
        });
    }

    // Finds the palette indices of the 8-bit map anew after palette() has changed.
    void updatePaletteIndices();

private:
    const CLSID& clsid_;
};

// ITalRenderEngineScalingParams for an engine with a state().
template <class Engine>
class ScalingParamsImpl : public ITalRenderEngineScalingParams {
public:
    STDMETHOD(put_ScalingMethod)(TalRenderEngineScalingMethodConstants value) override {
        static_cast<Engine*>(this)->state().scalingMethod = value;
        return S_OK;
    }
    STDMETHOD(get_ScalingMethod)(TalRenderEngineScalingMethodConstants* pInterpolation) override {
        if (!pInterpolation) {
            return bare(E_POINTER);
        }
        *pInterpolation = static_cast<Engine*>(this)->state().scalingMethod;
        return S_OK;
    }
};

} // namespace talx
