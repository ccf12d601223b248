// See tal_gdi_render_engine.h.

#include "gdi_engine/tal_gdi_render_engine.h"

#include "render/system_palette.h"
#include "render/win_types.h"

#include <olectl.h>
#include <wrl/client.h>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// The bitmap of a picture. The platform's pictures keep IPicture apart from IPictureDisp; one that does not
// answer for IPicture is taken to be laid out as it.
HBITMAP bitmapOf(IPictureDisp* picture) {
    ComPtr<IPicture> methods;
    if (FAILED(picture->QueryInterface(IID_PPV_ARGS(&methods)))) {
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
    return method(L"Initialize", [&](const MethodFrame& frame) {
        if (state_.initialized) {
            return S_OK;
        }
        const HWND window = toHandle<HWND>(Hwnd);
        const WindowDc windowDc(window);
        // What an earlier, failed call left must go before the device context that it is selected into.
        palette_ = {};
        memoryDc_.reset(windowDc.get() ? CreateCompatibleDC(windowDc.get()) : nullptr);
        if (!memoryDc_) {
            return frame.fail(E_TAL_NO_COMPATIBLE_DC);
        }
        dib_.setFormat(screenFormat());
        if (dib_.format() == LayerFormat::Pal8) {
            makePalette(windowDc.get());
        }
        if (!makeComposition(Width, Height)) {
            return frame.fail(E_TAL_NO_DIB_SECTION);
        }
        window_ = window;
        state_.initialized = true;
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::SetExtent(long Width, long Height) {
    return initializedMethod(L"SetExtent", [&](const MethodFrame& frame) {
        if (Width == state_.width && Height == state_.height) {
            return S_OK;
        }
        state_.width = 0;
        state_.height = 0;
        composition_ = {};
        dib_.destroy();
        if (!makeComposition(Width, Height)) {
            return frame.fail(E_TAL_NO_DIB_SECTION);
        }
        const RECT all{0, 0, Width, Height};
        FillRect(memoryDc_.get(), &all, static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH)));
        return S_OK;
    });
}

bool CTalGDIRenderEngine::makeComposition(long width, long height) {
    dib_.setSize(width, height);
    if (!dib_.create(palette())) {
        return false;
    }
    composition_ = SelectedBitmap(memoryDc_.get(), dib_.bitmap());
    state_.width = width;
    state_.height = height;
    return true;
}

STDMETHODIMP CTalGDIRenderEngine::Fill(long, long Ulx, long Uly, long Lrx, long Lry, OLE_COLOR Clr) {
    return initializedMethod(L"Fill", [&](const MethodFrame& frame) {
        const Rect clipped = state_.clip(Ulx, Uly, Lrx, Lry);
        if (clipped.empty()) {
            return S_OK;
        }
        COLORREF color = 0;
        if (FAILED(OleTranslateColor(Clr, nullptr, &color))) {
            return frame.fail(E_INVALIDARG, IDS_NO_COLOR);
        }
        const UniqueBrush brush(CreateSolidBrush(color));
        const RECT rect = toRECT(clipped);
        FillRect(memoryDc_.get(), &rect, brush.get());
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::GetDrawContext(long, __int64* phdc) {
    return initializedMethod(L"GetDrawContext", [&](const MethodFrame& frame) {
        if (!phdc) {
            return frame.fail(E_POINTER);
        }
        SelectClipRgn(memoryDc_.get(), nullptr);
        *phdc = fromHandle(memoryDc_.get());
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::ReleaseDrawContext(long, __int64) {
    return initializedMethod(L"ReleaseDrawContext", [&](const MethodFrame&) {
        SelectClipRgn(memoryDc_.get(), nullptr);
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::RefreshScreen(long, long, long Ulx, long Uly, long Lrx, long Lry) {
    return initializedMethod(L"RefreshScreen", [&](const MethodFrame&) {
        const Rect clipped = state_.clip(Ulx, Uly, Lrx, Lry);
        if (clipped.empty()) {
            return S_OK;
        }
        std::optional<WindowDc> windowDc;
        HDC destination = target_.dc();
        if (!destination) {
            destination = windowDc.emplace(window_).get();
        }
        std::optional<ScopedPalette> selected;
        if (dib_.format() == LayerFormat::Pal8) {
            selected.emplace(destination, palette());
        }
        // The source position is the caller's corner, not the clipped one: owners rely on it.
        BitBlt(destination, clipped.left, clipped.top, clipped.right - clipped.left,
               clipped.bottom - clipped.top, memoryDc_.get(), Ulx, Uly, SRCCOPY);
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::PaletteChange() {
    return method(L"PaletteChange", [&](const MethodFrame&) {
        if (!palette()) {
            return S_OK; // the screen has no palette to follow
        }
        const PaletteEntries entries = systemPaletteEntries(WindowDc(nullptr).get());
        SetPaletteEntries(palette(), 0, static_cast<UINT>(entries.size()), entries.data());
        dib_.loadColors(palette());
        SetDIBColorTable(memoryDc_.get(), 0, 256, dib_.colors());
        UnrealizeObject(palette());
        RealizePalette(memoryDc_.get());
        updateColorLookup();
        return S_OK;
    });
}

void CTalGDIRenderEngine::makePalette(HDC windowDc) {
    palette_ = SelectedPalette(memoryDc_.get(), createPalette(systemPaletteEntries(windowDc)));
    updateColorLookup();
}

STDMETHODIMP CTalGDIRenderEngine::SetRenderTargetFromHDC(__int64 Hdc) {
    return initializedMethod(L"SetRenderTargetFromHDC", [&](const MethodFrame&) {
        target_.setDc(toHandle<HDC>(Hdc));
        return S_OK;
    });
}

STDMETHODIMP CTalGDIRenderEngine::SetRenderTargetFromDIB(IPictureDisp* Picture) {
    return initializedMethod(L"SetRenderTargetFromDIB", [&](const MethodFrame& frame) {
        if (!Picture) {
            target_.setWindow();
            return S_OK;
        }
        const ComPtr<IPictureDisp> held(Picture);
        return target_.setBitmap(bitmapOf(Picture)) ? S_OK : frame.fail(E_TAL_NO_COMPATIBLE_DC);
    });
}

STDMETHODIMP CTalGDIRenderEngine::CreateDIBRenderTarget(TalRenderTargetFormatConstants Format,
                                                        IPictureDisp** pDIB) {
    return initializedMethod(L"CreateDIBRenderTarget", [&](const MethodFrame& frame) {
        if (!pDIB) {
            return E_POINTER;
        }
        *pDIB = nullptr;
        DibRecord dib;
        dib.setFormat(Format == talRenderTargetFormatUnspecified ? dib_.format()
                                                                 : static_cast<LayerFormat>(Format));
        dib.setSize(state_.width, state_.height);
        if (!dib.create(palette())) {
            return frame.fail(E_TAL_NO_DIB_SECTION);
        }
        PICTDESC description{};
        description.cbSizeofstruct = 24;
        description.picType = PICTYPE_BITMAP;
        description.bmp.hbitmap = dib.bitmap();
        ComPtr<IPictureDisp> picture;
        const HRESULT hr = OleCreatePictureIndirect(&description, IID_IPictureDisp, TRUE, &picture);
        if (FAILED(hr)) {
            return frame.fail(hr);
        }
        dib.release().release(); // the picture owns the bitmap now
        *pDIB = picture.Detach();
        return S_OK;
    });
}

LayerFormat CTalGDIRenderEngine::format() const {
    const std::optional<LayerBits> bits = dibBits(dib_.bitmap());
    return bits ? bits->format : LayerFormat::Unspecified;
}

HRESULT CTalGDIRenderEngine::withBits(const std::function<HRESULT(const LayerBits&)>& draw) {
    const std::optional<LayerBits> bits = dibBits(dib_.bitmap());
    if (!bits) {
        throw _com_error(E_FAIL);
    }
    GdiFlush(); // drawing by GDI may still be on its way into the bits
    return draw(*bits);
}

CTalGDIRenderEngine::SelectedPalette::SelectedPalette(HDC dc, UniquePalette palette)
    : dc_(dc), palette_(std::move(palette)) {
    if (palette_) {
        SelectPalette(dc_, palette_.get(), FALSE);
        RealizePalette(dc_);
    }
}

CTalGDIRenderEngine::SelectedPalette&
CTalGDIRenderEngine::SelectedPalette::operator=(SelectedPalette&& other) noexcept {
    deselect();
    dc_ = other.dc_;
    palette_ = std::move(other.palette_);
    return *this;
}

void CTalGDIRenderEngine::SelectedPalette::deselect() {
    if (palette_) {
        SelectPalette(dc_, static_cast<HPALETTE>(GetStockObject(DEFAULT_PALETTE)), FALSE);
    }
}

} // namespace talx
