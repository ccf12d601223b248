// Render target, its bits, PNG.
#include "viewer/save.h"

#include "viewer/failure.h"
#include "viewer/gdi.h"

#include <olectl.h>
#include <wincodec.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <vector>

namespace talview {
namespace {

using Microsoft::WRL::ComPtr;

// A picture as the target of the engine's refreshes; the window is the target again afterwards.
class RenderTarget {
public:
    RenderTarget(ITalRenderTargetAccess* access, IPictureDisp* picture) : access_(access) {
        check(access->SetRenderTargetFromDIB(picture), "SetRenderTargetFromDIB");
    }
    ~RenderTarget() { access_->SetRenderTargetFromDIB(nullptr); }
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

private:
    ITalRenderTargetAccess* access_;
};

// Rows as PNG takes them, without padding: palette indices, or the bytes blue, green, red if there is no
// palette.
struct Pixels {
    UINT width = 0;
    UINT height = 0;
    UINT stride = 0;
    std::vector<WICColor> palette;
    std::vector<BYTE> bits;
};

BYTE widen5(unsigned bits) {
    return static_cast<BYTE>((bits & 31) << 3 | (bits & 31) >> 2);
}
BYTE widen6(unsigned bits) {
    return static_cast<BYTE>((bits & 63) << 2 | (bits & 63) >> 4);
}

// On a screen without a palette the engine has none to give to an 8-bit picture: its colours are all black.
// The owner may give it any; these are a cube of 6 steps a channel and 40 greys.
void giveColors(HBITMAP bitmap) {
    const GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const Selected selected(dc.get(), bitmap);
    RGBQUAD colors[256];
    const auto isBlack = [](const RGBQUAD& color) {
        return !color.rgbRed && !color.rgbGreen && !color.rgbBlue;
    };
    if (GetDIBColorTable(dc.get(), 0, 256, colors) != 256 || !std::all_of(colors, colors + 256, isBlack)) {
        return;
    }
    for (int i = 0; i < 256; ++i) {
        const auto level = [](int step, int last) {
            return static_cast<BYTE>(step * 255 / last);
        };
        const BYTE grey = level(i - 215, 41);
        colors[i] = i < 216 ? RGBQUAD{level(i % 6, 5), level(i / 6 % 6, 5), level(i / 36, 5), 0}
                            : RGBQUAD{grey, grey, grey, 0};
    }
    SetDIBColorTable(dc.get(), 0, 256, colors);
}

// The pixels of a DIB section whose rows are stored from the top, as all here are.
Pixels readBitmap(HBITMAP bitmap) {
    DIBSECTION dib{};
    if (GetObjectW(bitmap, sizeof dib, &dib) != sizeof dib || !dib.dsBm.bmBits) {
        throw Failure("the picture has no pixels to save");
    }
    GdiFlush();
    const int bitCount = dib.dsBm.bmBitsPixel;
    const bool isRgb16 = dib.dsBmih.biCompression == BI_BITFIELDS && dib.dsBitfields[0] == 0xF800;
    Pixels pixels{static_cast<UINT>(dib.dsBm.bmWidth), static_cast<UINT>(dib.dsBm.bmHeight), 0, {}, {}};
    pixels.stride = pixels.width * (bitCount == 8 ? 1 : 3);
    pixels.bits.resize(static_cast<std::size_t>(pixels.stride) * pixels.height);
    if (bitCount == 8) {
        const GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
        const Selected selected(dc.get(), bitmap);
        RGBQUAD colors[256];
        const UINT count = GetDIBColorTable(dc.get(), 0, 256, colors);
        std::transform(colors, colors + count, std::back_inserter(pixels.palette), [](const RGBQUAD& color) {
            return 0xFF000000u | color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue;
        });
    }
    BYTE* to = pixels.bits.data();
    for (UINT y = 0; y < pixels.height; ++y) {
        const BYTE* from =
            static_cast<const BYTE*>(dib.dsBm.bmBits) + static_cast<std::size_t>(dib.dsBm.bmWidthBytes) * y;
        if (bitCount == 8 || bitCount == 24) {
            to = std::copy_n(from, pixels.stride, to);
            continue;
        }
        for (UINT x = 0; x < pixels.width; ++x, from += bitCount / 8, to += 3) {
            const unsigned word = from[0] | from[1] << 8;
            if (bitCount == 32) {
                std::copy_n(from, 3, to);
            } else {
                to[0] = widen5(word);
                to[1] = isRgb16 ? widen6(word >> 5) : widen5(word >> 5);
                to[2] = widen5(word >> (isRgb16 ? 11 : 10));
            }
        }
    }
    return pixels;
}

Pixels readThroughRenderTarget(Scene& scene, ITalRenderTargetAccess* access,
                               TalRenderTargetFormatConstants format) {
    ComPtr<IPictureDisp> disp;
    check(access->CreateDIBRenderTarget(format, &disp), "CreateDIBRenderTarget");
    ComPtr<IPicture> picture;
    check(disp.As(&picture), "the render target is no picture");
    OLE_HANDLE handle = 0;
    check(picture->get_Handle(&handle), "the render target has no bitmap");
    const auto bitmap = static_cast<HBITMAP>(LongToHandle(static_cast<long>(handle)));
    giveColors(bitmap);
    {
        const RenderTarget target(access, disp.Get());
        scene.refresh(scene.extent());
    }
    return readBitmap(bitmap);
}

// From an engine without render targets: the composition as 24-bit colour.
Pixels readThroughDrawContext(Scene& scene) {
    const RECT extent = scene.extent();
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = extent.right;
    info.bmiHeader.biHeight = -extent.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    const GdiOwner<HBITMAP> bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    if (!bitmap) {
        throw std::bad_alloc();
    }
    {
        const GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
        const Selected selected(dc.get(), bitmap.get());
        const DrawContext source(scene.engine(), 0, extent);
        if (!BitBlt(dc.get(), 0, 0, extent.right, extent.bottom, source, 0, 0, SRCCOPY)) {
            throw Failure("cannot read the engine's pixels");
        }
    }
    return readBitmap(bitmap.get());
}

void writePng(Pixels& pixels, const std::wstring& path) {
    const std::string what = "cannot write " + utf8(path);
    ComPtr<IWICImagingFactory> factory;
    checkCreated(
        CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&factory)),
        "windowscodecs.dll");
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    check(factory->CreateStream(&stream), what);
    check(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE), what);
    check(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &encoder), what);
    check(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache), what);
    check(encoder->CreateNewFrame(&frame, nullptr), what);
    check(frame->Initialize(nullptr), what);
    check(frame->SetSize(pixels.width, pixels.height), what);
    GUID format = pixels.palette.empty() ? GUID_WICPixelFormat24bppBGR : GUID_WICPixelFormat8bppIndexed;
    check(frame->SetPixelFormat(&format), what);
    if (!pixels.palette.empty()) {
        ComPtr<IWICPalette> palette;
        check(factory->CreatePalette(&palette), what);
        check(palette->InitializeCustom(pixels.palette.data(), static_cast<UINT>(pixels.palette.size())),
              what);
        check(frame->SetPalette(palette.Get()), what);
    }
    check(frame->WritePixels(pixels.height, pixels.stride, static_cast<UINT>(pixels.bits.size()),
                             pixels.bits.data()),
          what);
    check(frame->Commit(), what);
    check(encoder->Commit(), what);
}

} // namespace

void savePng(Scene& scene, TalRenderTargetFormatConstants format, const std::wstring& path) {
    ComPtr<ITalRenderTargetAccess> access;
    const bool hasTargets = SUCCEEDED(scene.engine()->QueryInterface(IID_PPV_ARGS(&access)));
    Pixels pixels =
        hasTargets ? readThroughRenderTarget(scene, access.Get(), format) : readThroughDrawContext(scene);
    writePng(pixels, path);
}

} // namespace talview
