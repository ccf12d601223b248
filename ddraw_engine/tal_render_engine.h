// The DirectDraw render engine: composes in an off-screen surface and copies it to the primary surface.
#pragma once

#include "com/class_info.h"
#include "com/com_object.h"
#include "ddraw_engine/direct_draw.h"
#include "ddraw_engine/icon_blend_d3d.h"
#include "render/gdi_handles.h"
#include "render/render_engine_base.h"

namespace talx {

class CTalRenderEngine : public CComObjectRootEx<CComSingleThreadModel>,
                         public CComCoClass<CTalRenderEngine, TalRenderEngine>,
                         public IProvideClassInfo2Impl<TalRenderEngine, ITalRenderEngine>,
                         public ISupportErrorInfoImpl,
                         public RenderEngineBase,
                         public ScalingParamsImpl<CTalRenderEngine> {
public:
    CTalRenderEngine() : RenderEngineBase(GetObjectCLSID()) {}

    static std::span<const ComInterfaceEntry> interfaceMap();

    // Reads, as the module is loaded, whether icons may be blended by Direct3D.
    static void WINAPI ObjectMain(bool starting);

    // Makes the DirectDraw object. Where there is none, Initialize will say so.
    HRESULT FinalConstruct();

    STDMETHOD(Initialize)(__int64 Hwnd, long Width, long Height) override;
    STDMETHOD(SetExtent)(long Width, long Height) override;
    STDMETHOD(PaletteChange)() override;

    STDMETHOD(Fill)(long Lyr, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) override;
    STDMETHOD(GetDrawContext)(long Lyr, __int64* phdc) override;
    STDMETHOD(ReleaseDrawContext)(long Lyr, __int64 Hdc) override;
    STDMETHOD(RefreshScreen)(long Sx, long Sy, long Ulx, long Uly, long Lrx, long Lry) override;

private:
    friend class ScalingParamsImpl<CTalRenderEngine>;

    // RenderEngineBase
    [[nodiscard]] EngineState& state() override { return state_; }

    // CompositionBuffer
    [[nodiscard]] bool exists() const override { return composition_ != nullptr; }
    [[nodiscard]] PixelFormat format() const override { return screenFormat_; }
    void withBits(FunctionRef<void(const BufferBits&)> draw) override;
    [[nodiscard]] HPALETTE palette() const override { return gdiPalette_.get(); }
    bool blendIconInHardware(const IconBlendJob& job) override;

    // The steps of Initialize.
    void askForDirect3D();
    void releaseSurfaces();
    HRESULT createPrimary();
    HRESULT readScreenFormat();
    HRESULT createComposition(long width, long height);
    HRESULT setUpPalette(HWND window);

    // A colour 0x00BBGGRR as a pixel of the composition surface.
    [[nodiscard]] DWORD fillPixel(COLORREF color) const;

    // Members go in reverse order: first the palette and the colours, then what DirectDraw made, last its
    // library.
    DirectDrawLibrary library_;
    HWND window_ = nullptr;
    bool initializing_ = false;
    Microsoft::WRL::ComPtr<IDirectDraw> directDraw_;
    Microsoft::WRL::ComPtr<IDirect3D2> direct3d_; // null where icons are blended in software
    IconBlenderD3d iconBlender_;
    Microsoft::WRL::ComPtr<IDirectDrawSurface> composition_; // null after a SetExtent that could not make it
    Microsoft::WRL::ComPtr<IDirectDrawSurface> primary_;
    Microsoft::WRL::ComPtr<IDirectDrawClipper> clipper_;
    Microsoft::WRL::ComPtr<IDirectDrawPalette> directDrawPalette_; // 8-bit screens only
    EngineState state_;
    PixelFormat screenFormat_ = PixelFormat::Unspecified;
    UniquePalette gdiPalette_; // 8-bit screens only
};

} // namespace talx
