// Setting up the DirectDraw engine: creation, Initialize, SetExtent and the palette.

#include "ddraw_engine/tal_render_engine.h"

#include "render/system_palette.h"

namespace talx {

namespace {

// Set once, as the module is loaded.
bool forceSoftwareBlend = false;

// What a new surface is filled with: all ones in every format that the engine knows.
constexpr DWORD initialFill = 0xFFFFFFFF;
constexpr DWORD resizedFill = 0x00FFFFFF;

// An Initialize under way: another one inside it fails.
class InitializeScope {
public:
    explicit InitializeScope(bool& running) : running_(running) {
        require(!running, E_UNEXPECTED);
        running_ = true;
    }
    ~InitializeScope() { running_ = false; }
    InitializeScope(const InitializeScope&) = delete;
    InitializeScope& operator=(const InitializeScope&) = delete;

private:
    bool& running_;
};

} // namespace

std::span<const ComInterfaceEntry> CTalRenderEngine::interfaceMap() {
    static constexpr ComInterfaceEntry entries[] = {
        comInterface<CTalRenderEngine, IProvideClassInfo2>(),
        comInterface<CTalRenderEngine, ISupportErrorInfo>(),
        comInterface<CTalRenderEngine, ITalRenderEngine2>(),
        comInterface<CTalRenderEngine, ITalRenderEngine2, ITalRenderEngine>(),
        comInterface<CTalRenderEngine, ITalRenderEngineScalingParams>(),
    };
    return entries;
}

void WINAPI CTalRenderEngine::ObjectMain(bool starting) {
    if (!starting) {
        return;
    }
    // The loader's lock is held: kernel32 only.
    wchar_t value[20] = {};
    GetPrivateProfileStringW(L"TalDisplay", L"AlphaBlend", L"AutoDetect", value, ARRAYSIZE(value),
                             L"Orbiscope.INI");
    forceSoftwareBlend = CompareStringOrdinal(value, -1, L"Software", -1, TRUE) == CSTR_EQUAL;
}

HRESULT CTalRenderEngine::FinalConstruct() {
    library_.create(directDraw_);
    return S_OK;
}

STDMETHODIMP CTalRenderEngine::Initialize(__int64 Hwnd, long Width, long Height) {
    return method(L"Initialize", [&] {
        if (state_.initialized) {
            return;
        }
        const InitializeScope running(initializing_); // DirectDraw sends the owner messages
        const auto window = toHandle<HWND>(Hwnd);
        check(directDraw_ ? S_OK : library_.create(directDraw_), IDS_NO_DIRECTDRAW);
        askForDirect3D();
        releaseSurfaces();
        check(nonNull(directDraw_)->SetCooperativeLevel(window, DDSCL_NORMAL), IDS_NO_COOPERATIVE_LEVEL);
        check(createPrimary(), IDS_NO_PRIMARY_SURFACE);
        check(readScreenFormat(), IDS_NO_PIXEL_FORMAT);
        check(directDraw_->CreateClipper(0, &clipper_, nullptr), IDS_NO_CLIPPER);
        check(nonNull(clipper_)->SetHWnd(0, window), IDS_CLIPPER_HWND_FAILED);
        check(createComposition(Width, Height), IDS_NO_OFFSCREEN_SURFACE);
        check(nonNull(primary_)->SetClipper(clipper_.Get()), IDS_SET_CLIPPER_FAILED);
        check(setUpPalette(window), IDS_SET_PALETTE_FAILED);
        fillSurface(composition_.Get(), {0, 0, Width, Height}, initialFill);
        state_.width = Width;
        state_.height = Height;
        window_ = window;
        state_.initialized = true;
    });
}

STDMETHODIMP CTalRenderEngine::SetExtent(long Width, long Height) {
    return initializedMethod(L"SetExtent", [&] {
        if (Width == state_.width && Height == state_.height) {
            return;
        }
        composition_.Reset();
        iconBlender_.release();
        state_.scratch.release();
        state_.width = Width;
        state_.height = Height;
        // Owners count on success here; Fill, the draw context and RefreshScreen tell them of the missing
        // surface.
        if (SUCCEEDED(createComposition(Width, Height))) {
            fillSurface(composition_.Get(), {0, 0, Width, Height}, resizedFill);
        }
    });
}

STDMETHODIMP CTalRenderEngine::PaletteChange() {
    return method(L"PaletteChange", [&] {
        if (const auto entries = systemPaletteEntries(WindowDc(window_).get())) {
            SetPaletteEntries(gdiPalette_.get(), 0, static_cast<UINT>(entries->size()), entries->data());
        }
        updatePaletteIndices();
    });
}

void CTalRenderEngine::askForDirect3D() {
    if (!direct3d_ && !forceSoftwareBlend) {
        nonNull(directDraw_)->QueryInterface(IID_IDirect3D2, &direct3d_);
    }
}

void CTalRenderEngine::releaseSurfaces() {
    primary_.Reset();
    composition_.Reset();
    clipper_.Reset();
    iconBlender_.release();
}

HRESULT CTalRenderEngine::createPrimary() {
    auto description = sizedStructure<DDSURFACEDESC>();
    description.dwFlags = DDSD_CAPS;
    description.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
    return createSurface(directDraw_.Get(), description, primary_);
}

HRESULT CTalRenderEngine::readScreenFormat() {
    auto format = sizedStructure<DDPIXELFORMAT>();
    const HRESULT hr = primary_->GetPixelFormat(&format);
    if (FAILED(hr)) {
        return hr;
    }
    switch (format.dwRGBBitCount) {
    case 8:
        screenFormat_ = PixelFormat::Pal8;
        break;
    case 16:
        screenFormat_ = format.dwRBitMask == 0xF800 ? PixelFormat::Rgb16 : PixelFormat::Rgb15;
        break;
    case 24:
        screenFormat_ = PixelFormat::Rgb24;
        break;
    case 32:
        screenFormat_ = PixelFormat::Rgb32;
        break;
    default:
        break;
    }
    return S_OK;
}

HRESULT CTalRenderEngine::createComposition(long width, long height) {
    const DWORD caps = direct3d_ ? DDSCAPS_OFFSCREENPLAIN | DDSCAPS_3DDEVICE : DDSCAPS_OFFSCREENPLAIN;
    return createSurface(directDraw_.Get(), caps, width, height, composition_);
}

HRESULT CTalRenderEngine::setUpPalette(HWND window) {
    if (screenFormat_ != PixelFormat::Pal8) {
        return S_OK;
    }
    PaletteEntries entries;
    {
        const WindowDc dc(window);
        entries = systemPaletteEntries(dc.get()).value_or(PaletteEntries{});
        gdiPalette_ = createPalette(entries);
    }
    updatePaletteIndices();
    directDrawPalette_.Reset();
    const HRESULT created =
        directDraw_->CreatePalette(DDPCAPS_8BIT, entries.data(), &directDrawPalette_, nullptr);
    restoreIfLost(primary_.Get());
    return FAILED(created) ? created : primary_->SetPalette(directDrawPalette_.Get());
}

} // namespace talx
