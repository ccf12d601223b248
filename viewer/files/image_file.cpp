// Decoding with WIC.
#include "viewer/files/image_file.h"

#include "viewer/view/failure.h"

#include <talxrend.hpp>
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
struct Decoded {
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

Decoded decode(const std::wstring& path) {
    const auto factory =
        talxrend::create<IWICImagingFactory>(CLSID_WICImagingFactory, notRegistered("windowscodecs.dll"));
    ComPtr<IWICBitmapDecoder> decoder;
    const HRESULT opened = factory->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                                              WICDecodeMetadataCacheOnDemand, &decoder);
    if (HRESULT_FACILITY(opened) == FACILITY_WIN32) {
        check(opened, "cannot open " + utf8(path));
    }
    ComPtr<IWICBitmapFrameDecode> frame;
    Decoded picture;
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

// Each pixel of a block: a value made from the address of the file's pixel.
template <class Pel, class Convert>
Block<Pel> filled(const Decoded& decoded, Convert convert) {
    Block<Pel> block(static_cast<std::size_t>(decoded.width) * decoded.height);
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = convert(decoded.bits.data() + i * decoded.pelBytes);
    }
    return block;
}

std::uint16_t word(const BYTE* pel) {
    return static_cast<std::uint16_t>(pel[0] | pel[1] << 8);
}

Picture sized(const Decoded& decoded, PictureKind kind, int depth) {
    Picture picture;
    picture.kind = kind;
    picture.width = static_cast<long>(decoded.width);
    picture.height = static_cast<long>(decoded.height);
    picture.depth = depth;
    return picture;
}

} // namespace

Picture loadImage(const std::wstring& path, int depth) {
    const Decoded decoded = decode(path);
    if (decoded.pelBytes == 2) {
        Picture picture = sized(decoded, PictureKind::grey16, depth);
        picture.words = filled<std::uint16_t>(decoded, word);
        return picture;
    }
    if (decoded.pelBytes == 1 || decoded.grey) {
        Picture picture = sized(decoded, PictureKind::grey8, 8);
        picture.bytes[0] = filled<std::uint8_t>(decoded, [](const BYTE* pel) { return *pel; });
        return picture;
    }
    Picture picture = sized(decoded, PictureKind::color, 8);
    for (int plane = 0; plane < 3; ++plane) {
        picture.bytes[plane] = filled<std::uint8_t>(decoded, [=](const BYTE* pel) { return pel[2 - plane]; });
    }
    return picture;
}

Picture loadRangeImage(const std::wstring& path, const std::wstring& maskPath) {
    const Decoded decoded = decode(path);
    if (decoded.pelBytes != 2) {
        throw Failure(utf8(path) + " is not a 16-bit grey picture, so it holds no range values");
    }
    Picture picture = sized(decoded, PictureKind::range16, 16);
    picture.words = filled<std::uint16_t>(decoded, word);
    if (!maskPath.empty()) {
        const Decoded mask = decode(maskPath);
        if (mask.width != decoded.width || mask.height != decoded.height) {
            throw Failure("the mask " + utf8(maskPath) + " has " + std::to_string(mask.width) + "x" +
                          std::to_string(mask.height) + " pixels, the image " +
                          std::to_string(decoded.width) + "x" + std::to_string(decoded.height));
        }
        picture.mask = filled<std::uint8_t>(mask, [bytes = std::min(mask.pelBytes, 3u)](const BYTE* pel) {
            const bool shows = std::any_of(pel, pel + bytes, [](BYTE byte) { return byte != 0; });
            return static_cast<std::uint8_t>(shows ? 255 : 0);
        });
    }
    return picture;
}

} // namespace talview
