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

    // CompositionBuffer. The format is the bitmap's own.
    [[nodiscard]] bool exists() const override { return dib_.bitmap() != nullptr; }
    [[nodiscard]] PixelFormat format() const override { return dib_.bits().format; }
    void withBits(FunctionRef<void(const BufferBits&)> draw) override;
    [[nodiscard]] HPALETTE palette() const override { return palette_.get(); }

    // The palette of a 256-colour screen, selected into the memory device context for as long as it is held.
    class CompositionPalette {
    public:
        CompositionPalette() = default;
        CompositionPalette(const CompositionPalette&) = delete;
        CompositionPalette& operator=(const CompositionPalette&) = delete;
        ~CompositionPalette() { drop(); }

        // Takes a palette for a device context in the place of the one that it held; null is none.
        void take(HDC dc, UniquePalette palette);
        // Selects it into the device context.
        void select() const;
        // Maps its colours to the system palette.
        void realize() const;
        // Selects it out of the device context, which must still be there, and deletes it.
        void drop();
        [[nodiscard]] HPALETTE get() const { return palette_.get(); }

    private:
        HDC dc_ = nullptr;
        UniquePalette palette_;
    };

    // Makes the palette of a 256-colour screen. The step always counts as done: without a palette the engine
    // goes on with the system's default colours.
    HRESULT makePalette(HDC windowDc);
    // Makes the composition bitmap of the given size and selects it into the memory device context.
    void makeComposition(long width, long height);

    // Destroyed from the last to the first: the target, the palette, the composition bitmap, the memory
    // device context, the colour maps.
    EngineState state_;
    HWND window_ = nullptr;
    UniqueMemoryDc memoryDc_;
    DibRecord dib_;
    SelectedBitmap composition_;
    CompositionPalette palette_;
    RenderTarget target_;
};

} // namespace talx
