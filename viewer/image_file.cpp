// Decoding with WIC.
#include "viewer/image_file.h"

#include "viewer/failure.h"

#include <wincodec.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace talview {
namespace {

using talxrend::check;
using talxrend::ComPtr;

// A decoded picture, rows without padding: 1 byte (grey), 2 bytes (16-bit grey) or 4 bytes (blue, green, red,
// alpha) a pixel.
struct Picture {
    UINT width = 0;
    UINT height = 0;
    UINT pelBytes = 0;
    bool grey = false; // blue, green and red are always equal
    std::vector<BYTE> bits;

    [[nodiscard]] const BYTE* row(long y) const {
        return bits.data() + static_cast<std::size_t>(width) * pelBytes * y;
    }
};

bool isOneOf(const GUID& format, std::initializer_list<GUID> formats) {
    return std::find(formats.begin(), formats.end(), format) != formats.end();
}

bool hasGreyPalette(IWICImagingFactory* factory, IWICBitmapFrameDecode* frame) {
    ComPtr<IWICPalette> palette;
    WICColor colors[256];
    UINT count = 0;
    if (FAILED(factory->CreatePalette(&palette)) || FAILED(frame->CopyPalette(palette.Get())) ||
        FAILED(palette->GetColors(ARRAYSIZE(colors), colors, &count))) {
        return false;
    }
    return std::all_of(colors, colors + count, [](WICColor color) {
        return (color >> 16 & 0xFF) == (color & 0xFF) && (color >> 8 & 0xFF) == (color & 0xFF);
    });
}

[[noreturn]] void throwUnreadable(const std::wstring& path) {
    throw Failure("cannot read " + utf8(path) + ": not a PNG, BMP, TIFF or JPEG picture, or a damaged one");
}

Picture decode(const std::wstring& path) {
    const auto factory =
        talxrend::create<IWICImagingFactory>(CLSID_WICImagingFactory, notRegistered("windowscodecs.dll"));
    ComPtr<IWICBitmapDecoder> decoder;
    const HRESULT opened = factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                                              WICDecodeMetadataCacheOnDemand, &decoder);
    if (HRESULT_FACILITY(opened) == FACILITY_WIN32) {
        check(opened, "cannot open " + utf8(path));
    }
    ComPtr<IWICBitmapFrameDecode> frame;
    Picture picture;
    GUID format{};
    if (FAILED(opened) || FAILED(decoder->GetFrame(0, &frame)) || FAILED(frame->GetPixelFormat(&format)) ||
        FAILED(frame->GetSize(&picture.width, &picture.height))) {
        throwUnreadable(path);
    }

    ComPtr<IWICBitmapSource> source = frame;
    if (format == GUID_WICPixelFormat16bppGray) {
        picture.pelBytes = 2;
    } else if (format == GUID_WICPixelFormat8bppGray) {
        picture.pelBytes = 1;
    } else {
        // A grey file of fewer bits, or with a grey palette, goes the same way as colour: that conversion is
        // exact, the one to grey weighs the channels.
        picture.pelBytes = 4;
        picture.grey = isOneOf(format, {GUID_WICPixelFormatBlackWhite, GUID_WICPixelFormat2bppGray,
                                        GUID_WICPixelFormat4bppGray}) ||
                       (isOneOf(format, {GUID_WICPixelFormat1bppIndexed, GUID_WICPixelFormat2bppIndexed,
                                         GUID_WICPixelFormat4bppIndexed, GUID_WICPixelFormat8bppIndexed}) &&
                        hasGreyPalette(factory.Get(), frame.Get()));
        ComPtr<IWICFormatConverter> converter;
        check(factory->CreateFormatConverter(&converter), "cannot convert " + utf8(path));
        if (FAILED(converter->Initialize(frame.Get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                                         nullptr, 0, WICBitmapPaletteTypeCustom))) {
            throwUnreadable(path);
        }
        source = converter;
    }

    const std::uint64_t stride = static_cast<std::uint64_t>(picture.width) * picture.pelBytes;
    const std::uint64_t size = stride * picture.height;
    if (size > 0x7FFFFFFF) {
        throw Failure("cannot read " + utf8(path) + ": it is too large");
    }
    picture.bits.resize(size);
    if (FAILED(source->CopyPixels(nullptr, static_cast<UINT>(stride), static_cast<UINT>(size),
                                  picture.bits.data()))) {
        throwUnreadable(path);
    }
    return picture;
}

// Each pixel of one plane: a value made from the address of the picture's pixel.
template <class Pel, class Convert>
void fillPlane(const Image& image, long plane, const Picture& picture, Convert convert) {
    const PlaneAccess access = image.access(plane, talPelAccessWrite);
    for (long y = 0; y < image.height(); ++y) {
        const BYTE* from = picture.row(y);
        Pel* to = access.row<Pel>(y);
        for (long x = 0; x < image.width(); ++x, from += picture.pelBytes) {
            to[x] = convert(from);
        }
    }
}

std::uint16_t word(const BYTE* pel) {
    return static_cast<std::uint16_t>(pel[0] | pel[1] << 8);
}

} // namespace

Image loadImage(const std::wstring& path, int depth) {
    const Picture picture = decode(path);
    const ImageKind kind = picture.pelBytes == 2                   ? ImageKind::grey16
                           : picture.pelBytes == 1 || picture.grey ? ImageKind::grey8
                                                                   : ImageKind::color;
    Image image(kind, picture.width, picture.height, false, depth);
    if (kind == ImageKind::grey16) {
        fillPlane<std::uint16_t>(image, 0, picture, word);
    } else if (kind == ImageKind::grey8) {
        fillPlane<std::uint8_t>(image, 0, picture, [](const BYTE* pel) { return *pel; });
    } else {
        for (long plane = 0; plane < 3; ++plane) {
            fillPlane<std::uint8_t>(image, plane, picture, [=](const BYTE* pel) { return pel[2 - plane]; });
        }
    }
    return image;
}

Image loadRangeImage(const std::wstring& path, const std::wstring& maskPath) {
    const Picture picture = decode(path);
    if (picture.pelBytes != 2) {
        throw Failure(utf8(path) + " is not a 16-bit grey picture, so it holds no range values");
    }
    Image image(ImageKind::range16, picture.width, picture.height, !maskPath.empty());
    fillPlane<std::uint16_t>(image, 0, picture, word);
    if (!maskPath.empty()) {
        const Picture mask = decode(maskPath);
        if (mask.width != picture.width || mask.height != picture.height) {
            throw Failure("the mask " + utf8(maskPath) + " has " + std::to_string(mask.width) + "x" +
                          std::to_string(mask.height) + " pixels, the image " +
                          std::to_string(picture.width) + "x" + std::to_string(picture.height));
        }
        fillPlane<std::uint8_t>(image, 1, mask, [bytes = std::min(mask.pelBytes, 3u)](const BYTE* pel) {
            const bool shows = std::any_of(pel, pel + bytes, [](BYTE byte) { return byte != 0; });
            return static_cast<std::uint8_t>(shows ? 255 : 0);
        });
    }
    return image;
}

} // namespace talview
