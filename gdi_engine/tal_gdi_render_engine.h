// The render engine that composes in a GDI DIB section and copies it with BitBlt.
#pragma once

#include "com/class_info.h"
#include "com/com_object.h"
#include "gdi_engine/dib_record.h"
#include "gdi_engine/render_target.h"
#include "render/render_engine_base.h"

namespace talx {

class CTalGDIRenderEngine : public CComObjectRootEx<CComSingleThreadModel>,
                            public CComCoClass<CTalGDIRenderEngine, TalGDIRenderEngine>,
                            public IProvideClassInfo2Impl<TalGDIRenderEngine, ITalRenderEngine>,
                            public ISupportErrorInfoImpl,
                            public RenderEngineBase,
                            public ITalRenderTargetAccess,
                            public ScalingParamsImpl<CTalGDIRenderEngine> {
public:
    CTalGDIRenderEngine() : RenderEngineBase(GetObjectCLSID()) {}

    static std::span<const ComInterfaceEntry> interfaceMap();

    STDMETHOD(Initialize)(__int64 Hwnd, long Width, long Height) override;
    STDMETHOD(SetExtent)(long Width, long Height) override;
    STDMETHOD(Fill)(long Lyr, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) override;
    STDMETHOD(GetDrawContext)(long Lyr, __int64* phdc) override;
    STDMETHOD(ReleaseDrawContext)(long Lyr, __int64 Hdc) override;
    STDMETHOD(RefreshScreen)(long Sx, long Sy, long Ulx, long Uly, long Lrx, long Lry) override;
    STDMETHOD(PaletteChange)() override;

    STDMETHOD(SetRenderTargetFromHDC)(__int64 Hdc) override;
    STDMETHOD(SetRenderTargetFromDIB)(IPictureDisp* Picture) override;
    STDMETHOD(CreateDIBRenderTarget)(TalRenderTargetFormatConstants Format, IPictureDisp** pDIB) override;

private:
    friend class ScalingParamsImpl<CTalGDIRenderEngine>;

    // RenderEngineBase
    [[nodiscard]] EngineState& state() override { return state_; }

    // LayerSurface
    [[nodiscard]] bool hasBuffer() const override { return dib_.bitmap() != nullptr; }
    [[nodiscard]] LayerFormat format() const override;
    HRESULT withBits(const std::function<HRESULT(const LayerBits&)>& draw) override;
    [[nodiscard]] HPALETTE palette() const override { return palette_.get(); }

    // The palette of a 256-colour screen, selected into the memory device context until the end.
    class SelectedPalette {
    public:
        SelectedPalette() = default;
        SelectedPalette(HDC dc, UniquePalette palette);
        SelectedPalette(SelectedPalette&&) = default;
        SelectedPalette& operator=(SelectedPalette&& other) noexcept;
        ~SelectedPalette() { deselect(); }

        [[nodiscard]] HPALETTE get() const { return palette_.get(); }

    private:
        void deselect();

        HDC dc_ = nullptr;
        UniquePalette palette_;
    };

    // The step always counts as done: without a palette the engine goes on with the system's default colours.
    void makePalette(HDC windowDc);
    // Makes the composition bitmap of the given size and selects it into the memory device context.
    bool makeComposition(long width, long height);

    // Destroyed from the last to the first: the target, the palette, the composition bitmap, the memory
    // device context, the colour maps.
    EngineState state_;
    HWND window_ = nullptr;
    UniqueMemoryDc memoryDc_;
    DibRecord dib_;
    SelectedBitmap composition_;
    SelectedPalette palette_;
    RenderTarget target_;
};

} // namespace talx
