// Render targets, and pictures of a view into files.
#pragma once

#include "talxrend/engine.h"

#include <olectl.h>
#include <wincodec.h>

#include <array>
#include <cstddef>

namespace talxrend {

struct DeleteGdi {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
    void operator()(HDC dc) const { DeleteDC(dc); }
};

// Owner of a bitmap, a brush, ..., or of a device context of the owner's own making.
template <class Handle>
using GdiOwner = std::unique_ptr<std::remove_pointer_t<Handle>, DeleteGdi>;

// An object selected into a device context for the length of a scope.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), before_(SelectObject(dc, object)) {}
    ~Selected() { SelectObject(dc_, before_); }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

private:
    HDC dc_;
    HGDIOBJ before_;
};

// Where the GDI engine's show copies to, for the length of a scope: a device context of the owner's, such as
// a printer's, or a picture. The window is the target again afterwards.
class RenderTarget {
public:
    // dc: stays the owner's and outlives this.
    RenderTarget(const Engine& engine, HDC dc) : access_(targetsOf(engine)) {
        check(access_->SetRenderTargetFromHDC(reinterpret_cast<__int64>(dc)), access_,
              "SetRenderTargetFromHDC");
    }
    RenderTarget(const Engine& engine, ComPtr<IPictureDisp> picture)
        : access_(targetsOf(engine)), picture_(std::move(picture)) {
        check(access_->SetRenderTargetFromDIB(picture_.Get()), access_, "SetRenderTargetFromDIB");
    }
    ~RenderTarget() { access_->SetRenderTargetFromDIB(nullptr); }
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;

    [[nodiscard]] static ComPtr<ITalRenderTargetAccess> targetsOf(const Engine& engine) {
        check(engine.targets() ? S_OK : E_NOINTERFACE, "the engine has no render targets");
        return engine.targets();
    }

private:
    ComPtr<ITalRenderTargetAccess> access_;
    ComPtr<IPictureDisp> picture_;
};

// A new picture of the view's size for a RenderTarget; format 0 is the engine's own.
[[nodiscard]] inline ComPtr<IPictureDisp>
createPicture(const Engine& engine,
              TalRenderTargetFormatConstants format = talRenderTargetFormatUnspecified) {
    const auto access = RenderTarget::targetsOf(engine);
    ComPtr<IPictureDisp> picture;
    check(access->CreateDIBRenderTarget(format, &picture), access, "CreateDIBRenderTarget");
    return picture;
}

// The picture's bitmap, which it owns. It must not be selected into a device context while it is a target.
[[nodiscard]] inline HBITMAP bitmapOf(const ComPtr<IPictureDisp>& picture) {
    ComPtr<IPicture> asPicture;
    OLE_HANDLE handle = 0;
    check(picture.As(&asPicture), "the render target is no picture");
    check(asPicture->get_Handle(&handle), "the render target has no bitmap");
    return static_cast<HBITMAP>(LongToHandle(static_cast<long>(handle)));
}

namespace detail {

// Rows from the top without padding: indices into the palette, or the bytes blue, green, red if there is
// none.
struct Pixels {
    UINT width = 0;
    UINT height = 0;
    std::vector<WICColor> palette;
    std::vector<BYTE> bits;

    [[nodiscard]] UINT stride() const { return palette.empty() ? width * 3 : width; }
};

inline std::vector<WICColor> paletteOf(HBITMAP bitmap) {
    const GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const Selected selected(dc.get(), bitmap);
    std::array<RGBQUAD, 256> colors{};
    GetDIBColorTable(dc.get(), 0, 256, colors.data());
    std::vector<WICColor> palette(colors.size());
    std::transform(colors.begin(), colors.end(), palette.begin(), [](const RGBQUAD& color) {
        return 0xFF000000u | color.rgbRed << 16 | color.rgbGreen << 8 | color.rgbBlue;
    });
    return palette;
}

// The pixels of a DIB section with rows from the top. Channels of 5 and 6 bits are widened by repeating their
// upper bits.
inline Pixels pixelsOf(HBITMAP bitmap) {
    DIBSECTION dib{};
    if (GetObjectW(bitmap, sizeof dib, &dib) != sizeof dib || !dib.dsBm.bmBits || dib.dsBm.bmBitsPixel < 8) {
        throw Failure(E_INVALIDARG, "the bitmap has no pixels to save");
    }
    GdiFlush();
    Pixels pixels{static_cast<UINT>(dib.dsBm.bmWidth), static_cast<UINT>(dib.dsBm.bmHeight), {}, {}};
    const int bitCount = dib.dsBm.bmBitsPixel;
    if (bitCount == 8) {
        pixels.palette = paletteOf(bitmap);
    }
    const bool isRgb16 = dib.dsBmih.biCompression == BI_BITFIELDS && dib.dsBitfields[0] == 0xF800;
    const auto widen = [](unsigned value, int count) {
        value &= (1u << count) - 1;
        return static_cast<BYTE>(value << (8 - count) | value >> (2 * count - 8));
    };
    pixels.bits.resize(static_cast<std::size_t>(pixels.stride()) * pixels.height);
    BYTE* to = pixels.bits.data();
    for (UINT y = 0; y < pixels.height; ++y) {
        const BYTE* from =
            static_cast<const BYTE*>(dib.dsBm.bmBits) + static_cast<std::size_t>(dib.dsBm.bmWidthBytes) * y;
        if (bitCount == 8 || bitCount == 24) {
            to = std::copy_n(from, pixels.stride(), to);
            continue;
        }
        for (UINT x = 0; x < pixels.width; ++x, from += bitCount / 8, to += 3) {
            const unsigned word = from[0] | from[1] << 8;
            if (bitCount == 32) {
                std::copy_n(from, 3, to);
            } else {
                to[0] = widen(word, 5);
                to[1] = isRgb16 ? widen(word >> 5, 6) : widen(word >> 5, 5);
                to[2] = widen(word >> (isRgb16 ? 11 : 10), 5);
            }
        }
    }
    return pixels;
}

inline void dropPalette(Pixels& pixels) {
    std::vector<BYTE> bits;
    bits.reserve(pixels.bits.size() * 3);
    for (const BYTE index : pixels.bits) {
        const WICColor color = pixels.palette.at(index);
        bits.insert(bits.end(), {static_cast<BYTE>(color), static_cast<BYTE>(color >> 8),
                                 static_cast<BYTE>(color >> 16)});
    }
    pixels.bits = std::move(bits);
    pixels.palette.clear();
}

// The container format by the name's ending, in small or capital letters.
inline const GUID& containerOf(const std::wstring& path) {
    const auto dot = path.find_last_of(L'.');
    const std::wstring ending = dot == std::wstring::npos ? L"" : path.substr(dot);
    const auto is = [&](const wchar_t* other) {
        return lstrcmpiW(ending.c_str(), other) == 0;
    };
    if (is(L".png")) {
        return GUID_ContainerFormatPng;
    }
    if (is(L".bmp")) {
        return GUID_ContainerFormatBmp;
    }
    if (is(L".jpg") || is(L".jpeg")) {
        return GUID_ContainerFormatJpeg;
    }
    if (is(L".tif") || is(L".tiff")) {
        return GUID_ContainerFormatTiff;
    }
    throw Failure(E_INVALIDARG,
                  "cannot write " + utf8(path) + ", whose name ends in none of .png .jpg .bmp .tif");
}

inline void encode(Pixels& pixels, const GUID& container, const std::wstring& path, const std::string& what) {
    const auto factory = create<IWICImagingFactory>(CLSID_WICImagingFactory, what);
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    check(factory->CreateStream(&stream), what);
    check(stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE), what);
    check(factory->CreateEncoder(container, nullptr, &encoder), what);
    check(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache), what);
    check(encoder->CreateNewFrame(&frame, nullptr), what);
    check(frame->Initialize(nullptr), what);
    check(frame->SetSize(pixels.width, pixels.height), what);
    const GUID wanted = pixels.palette.empty() ? GUID_WICPixelFormat24bppBGR : GUID_WICPixelFormat8bppIndexed;
    GUID format = wanted;
    check(frame->SetPixelFormat(&format), what);
    check(format == wanted ? S_OK : WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT, what);
    if (!pixels.palette.empty()) {
        ComPtr<IWICPalette> palette;
        check(factory->CreatePalette(&palette), what);
        check(palette->InitializeCustom(pixels.palette.data(), static_cast<UINT>(pixels.palette.size())),
              what);
        check(frame->SetPalette(palette.Get()), what);
    }
    check(frame->WritePixels(pixels.height, pixels.stride(), static_cast<UINT>(pixels.bits.size()),
                             pixels.bits.data()),
          what);
    check(frame->Commit(), what);
    check(encoder->Commit(), what);
}

} // namespace detail

// A file under a name of its own, beside another one, until it takes the place of that; gone if it never
// does. Two programs that replace the same file do not meet.
class NewFile {
public:
    explicit NewFile(const std::wstring& replaced)
        : replaced_(replaced), path_(replaced + L"." + std::to_wstring(GetCurrentProcessId()) + L".new") {}
    ~NewFile() { DeleteFileW(path_.c_str()); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    [[nodiscard]] const std::wstring& path() const { return path_; }

    // To be called when the file is closed; what: for the Failure that says that it cannot.
    void replace(const std::string& what) const {
        if (!MoveFileExW(path_.c_str(), replaced_.c_str(), MOVEFILE_REPLACE_EXISTING)) {
            throw Failure(HRESULT_FROM_WIN32(GetLastError()), what);
        }
    }

private:
    std::wstring replaced_;
    std::wstring path_;
};

// Writes a DIB section with rows from the top, as the engines' pictures are, as PNG, JPEG, BMP or TIFF by the
// name's ending; a file of that name is replaced when the new one, which has another name until then, is
// whole. PNG keeps the palette of 8-bit pictures, everything else becomes 24-bit colour. Throws a Failure
// with WIC's or the system's code. The thread must be an apartment.
inline void saveBitmap(HBITMAP bitmap, const std::wstring& path) {
    const std::string what = "cannot write " + utf8(path);
    const GUID& container = detail::containerOf(path);
    detail::Pixels pixels = detail::pixelsOf(bitmap);
    if (!pixels.palette.empty() && container != GUID_ContainerFormatPng) {
        detail::dropPalette(pixels);
    }
    const NewFile file(path);
    detail::encode(pixels, container, file.path(), what);
    file.replace(what);
}

inline void savePicture(const ComPtr<IPictureDisp>& picture, const std::wstring& path) {
    saveBitmap(bitmapOf(picture), path);
}

enum class Rows { fromTop, fromBottom };

// The view as it is composed now, through either engine's device context, as a DIB section of 24-bit colour.
// The system's clipboard wants rows from the bottom, everything else here rows from the top.
[[nodiscard]] inline GdiOwner<HBITMAP> viewBitmap(const Engine& engine, Rows rows = Rows::fromTop) {
    const RECT view = engine.extent();
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = view.right;
    info.bmiHeader.biHeight = rows == Rows::fromTop ? -view.bottom : view.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    GdiOwner<HBITMAP> bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    check(bitmap ? S_OK : E_OUTOFMEMORY, "cannot make a bitmap of the view's size");
    const GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const Selected selected(dc.get(), bitmap.get());
    DrawContext source(engine, 0, view);
    const bool copied = BitBlt(dc.get(), 0, 0, view.right, view.bottom, source, 0, 0, SRCCOPY);
    source.end();
    check(copied ? S_OK : E_FAIL, "cannot read the engine's pixels");
    GdiFlush();
    return bitmap;
}

// Writes the view as it is composed now.
inline void saveView(const Engine& engine, const std::wstring& path) {
    saveBitmap(viewBitmap(engine).get(), path);
}

} // namespace talxrend
