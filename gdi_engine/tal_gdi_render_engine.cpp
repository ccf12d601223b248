// See tal_gdi_render_engine.h.

#include "gdi_engine/tal_gdi_render_engine.h"

#include "render/ole_color.h"
#include "render/system_palette.h"
#include "render/win_types.h"

#include <wrl/client.h>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// The bitmap of a picture. The platform's pictures keep IPicture apart from IPictureDisp; one that does not
// answer for IPicture is taken to be laid out as it.
HBITMAP bitmapOf(IPictureDisp* picture) {
    ComPtr<IPicture> methods;
    if (FAILED(picture->QueryInterface(IID_PPV_ARGS(&methods))) || !methods) {
        methods = reinterpret_cast<IPicture*>(picture);
    }
    OLE_HANDLE handle = 0;
    methods->get_Handle(&handle);
    return toHandle<HBITMAP>(static_cast<LONG>(handle));
}

} // namespace

std::span<const ComInterfaceEntry> CTalGDIRenderEngine::interfaceMap() {
    static constexpr ComInterfaceEntry entries[] = {
        comInterface<CTalGDIRenderEngine, IProvideClassInfo2>(),
        comInterface<CTalGDIRenderEngine, ISupportErrorInfo>(),
        comInterface<CTalGDIRenderEngine, ITalRenderEngine2>(),
        comInterface<CTalGDIRenderEngine, ITalRenderEngine2, ITalRenderEngine>(),
        comInterface<CTalGDIRenderEngine, ITalRenderTargetAccess>(),
        comInterface<CTalGDIRenderEngine, ITalRenderEngineScalingParams>(),
    };
    return entries;
}

STDMETHODIMP CTalGDIRenderEngine::Initialize(__int64 Hwnd, long Width, long Height) {
    return method(L"Initialize", [&] {
        if (state_.initialized) {
            return;
        }
        const PixelFormat format = screenFormat();
        const HWND window = toHandle<HWND>(Hwnd);
        const WindowDc windowDc(window);
        // What an earlier, failed call left must go before the device context that it is selected into.
        palette_.drop();
        memoryDc_.reset(windowDc.get() ? CreateCompatibleDC(windowDc.get()) : nullptr);
        require(memoryDc_ != nullptr, E_TAL_NO_COMPATIBLE_DC);
        dib_.setFormat(format);
        if (dib_.headerFormat() == PixelFormat::Pal8) {
            // It succeeds whatever GDI answers; the message is there for a palette step that can fail.
            check(makePalette(windowDc.get()), IDS_SET_PALETTE_FAILED);
        }
        makeComposition(Width, Height);
        window_ = window;
        state_.initialized = true;
    });
}

STDMETHODIMP CTalGDIRenderEngine::SetExtent(long Width, long Height) {
    return initializedMethod(L"SetExtent", [&] {
        if (Width == state_.width && Height == state_.height) {
            return;
        }
        state_.width = 0;
        state_.height = 0;
        state_.scratch.release();
        composition_.deselect();
        dib_.destroy();
        makeComposition(Width, Height);
        const RECT all{0, 0, Width, Height};
        FillRect(memoryDc_.get(), &all, static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH)));
    });
}

void CTalGDIRenderEngine::makeComposition(long width, long height) {
    dib_.setSize(width, height);
    require(dib_.create(palette()), E_TAL_NO_DIB_SECTION);
    if (!composition_.select(memoryDc_.get(), dib_.bitmap())) {
        dib_.destroy();
        check(E_TAL_NO_DIB_SECTION);
    }
    state_.width = width;
    state_.height = height;
}

STDMETHODIMP CTalGDIRenderEngine::Fill(long, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) {
    return initializedMethod(L"Fill", [&] {
        const Rect clipped = state_.clip(Ulx, Uly, Lrx, Lry);
        if (clipped.empty()) {
            return;
        }
        const UniqueBrush brush(CreateSolidBrush(translateColor(Clr)));
        const RECT rect = toRECT(clipped);
        FillRect(memoryDc_.get(), &rect, brush.get());
    });
}

STDMETHODIMP CTalGDIRenderEngine::GetDrawContext(long, __int64* phdc) {
    return initializedMethod(L"GetDrawContext", [&] {
        require(phdc, E_POINTER);
        SelectClipRgn(memoryDc_.get(), nullptr);
        *phdc = fromHandle(memoryDc_.get());
    });
}

STDMETHODIMP CTalGDIRenderEngine::ReleaseDrawContext(long, __int64) {
    return initializedMethod(L"ReleaseDrawContext", [&] { SelectClipRgn(memoryDc_.get(), nullptr); });
}

STDMETHODIMP CTalGDIRenderEngine::RefreshScreen(long, long, long Ulx, long Uly, long Lrx, long Lry) {
    return initializedMethod(L"RefreshScreen", [&] {
        const Rect clipped = state_.clip(Ulx, Uly, Lrx, Lry);
        if (clipped.empty()) {
            return;
        }
        std::optional<WindowDc> windowDc;
        HDC destination = target_.dc();
        if (!destination) {
            destination = windowDc.emplace(window_).get();
        }
        std::optional<SelectedPalette> selected;
        if (dib_.headerFormat() == PixelFormat::Pal8) {
            selected.emplace(destination, palette()).realize();
        }
        // The source position is the caller's corner, not the clipped one: owners rely on it.
        BitBlt(destination, clipped.left, clipped.top, clipped.right - clipped.left,
               clipped.bottom - clipped.top, memoryDc_.get(), Ulx, Uly, SRCCOPY);
    });
}

STDMETHODIMP CTalGDIRenderEngine::PaletteChange() {
    return method(L"PaletteChange", [&] {
        if (!palette()) {
            return; // the screen has no palette to follow
        }
        const auto entries = systemPaletteEntries(WindowDc(nullptr).get());
        if (!entries) {
            return; // the palette that there is remains the best guess
        }
        SetPaletteEntries(palette(), 0, static_cast<UINT>(entries->size()), entries->data());
        dib_.loadColors(palette());
        SetDIBColorTable(memoryDc_.get(), 0, 256, dib_.colors());
        UnrealizeObject(palette());
        palette_.realize();
        updatePaletteIndices();
    });
}

HRESULT CTalGDIRenderEngine::makePalette(HDC windowDc) {
    palette_.take(memoryDc_.get(), createPalette(systemPaletteEntries(windowDc).value_or(PaletteEntries{})));
    updatePaletteIndices();
    palette_.select();
    palette_.realize();
    return S_OK;
}

STDMETHODIMP CTalGDIRenderEngine::SetRenderTargetFromHDC(__int64 Hdc) {
    return initializedMethod(L"SetRenderTargetFromHDC", [&] { target_.setDc(toHandle<HDC>(Hdc)); });
}

STDMETHODIMP CTalGDIRenderEngine::SetRenderTargetFromDIB(IPictureDisp* Picture) {
    return initializedMethod(L"SetRenderTargetFromDIB", [&] {
        if (!Picture) {
            target_.setWindow();
            return;
        }
        const ComPtr<IPictureDisp> held(Picture);
        require(target_.setBitmap(bitmapOf(Picture)), E_TAL_NO_COMPATIBLE_DC);
    });
}

STDMETHODIMP CTalGDIRenderEngine::CreateDIBRenderTarget(TalRenderTargetFormatConstants Format,
                                                        IPictureDisp** pDIB) {
    return initializedMethod(L"CreateDIBRenderTarget", [&] {
        if (!pDIB) {
            return E_POINTER; // without error information
        }
        *pDIB = nullptr;
        DibRecord dib;
        dib.setFormat(Format == talRenderTargetFormatUnspecified ? dib_.headerFormat()
                                                                 : static_cast<PixelFormat>(Format));
        dib.setSize(state_.width, state_.height);
        require(dib.create(palette()), E_TAL_NO_DIB_SECTION);
        PICTDESC description{};
        description.cbSizeofstruct = 24;
        description.picType = PICTYPE_BITMAP;
        description.bmp.hbitmap = dib.bitmap();
        ComPtr<IPictureDisp> picture;
        const HRESULT hr = OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, &picture);
        checkMade(hr, picture.Get());
        static_cast<void>(dib.release().release()); // the picture owns the bitmap now
        *pDIB = picture.Detach();
        return S_OK;
    });
}

void CTalGDIRenderEngine::withBits(FunctionRef<void(const BufferBits&)> draw) {
    if (!dib_.bitmap()) {
        raise(E_FAIL);
    }
    GdiFlush(); // drawing by GDI may still be on its way into the bits
    draw(dib_.bits());
}

void CTalGDIRenderEngine::CompositionPalette::take(HDC dc, UniquePalette palette) {
    drop();
    dc_ = dc;
    palette_ = std::move(palette);
}

void CTalGDIRenderEngine::CompositionPalette::select() const {
    if (palette_) {
        SelectPalette(dc_, palette_.get(), FALSE);
    }
}

void CTalGDIRenderEngine::CompositionPalette::realize() const {
    if (palette_) {
        RealizePalette(dc_);
    }
}

void CTalGDIRenderEngine::CompositionPalette::drop() {
    if (palette_) {
        SelectPalette(dc_, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), FALSE);
        palette_.reset();
    }
}

} // namespace talx
