// See dib_record.h.

#include "gdi_engine/dib_record.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

namespace talx {

namespace {

constexpr DWORD redMask565 = 0xF800;
constexpr DWORD colorSpaceSrgb = 0x73524742; // LCS_sRGB, spelled 'sRGB' by the platform

PixelFormat formatOf(WORD bitCount, DWORD compression, DWORD redMask) {
    switch (bitCount) {
    case 8:
        return PixelFormat::Pal8;
    case 16:
        return compression == BI_BITFIELDS && redMask == redMask565 ? PixelFormat::Rgb16 : PixelFormat::Rgb15;
    case 24:
        return PixelFormat::Rgb24;
    case 32:
        return PixelFormat::Rgb32;
    default:
        return PixelFormat::Unspecified;
    }
}

// The pixels of a DIB section, by what it says of itself; none for any other bitmap.
BufferBits dibBits(HBITMAP bitmap) {
    DIBSECTION section{};
    if (GetObjectW(bitmap, sizeof section, &section) != sizeof section || !section.dsBm.bmBits) {
        return {};
    }
    const BITMAP& bm = section.dsBm;
    return BufferBits{static_cast<std::uint8_t*>(bm.bmBits),
                      (bm.bmWidthBytes + 3) & ~3,
                      {bm.bmWidth, bm.bmHeight},
                      formatOf(bm.bmBitsPixel, section.dsBmih.biCompression, section.dsBitfields[0])};
}

} // namespace

PixelFormat screenFormat() {
    const WindowDc screen(nullptr);
    const UniqueBitmap probe(CreateCompatibleBitmap(screen.get(), 1, 1));
    struct {
        BITMAPINFOHEADER header;
        DWORD masksOrColors[256];
    } info{};
    info.header.biSize = sizeof info.header;
    // The first call fills the header; only with a filled header does the second fill the masks too.
    for (int call = 0; call < 2; ++call) {
        GetDIBits(screen.get(), probe.get(), 0, 1, nullptr, reinterpret_cast<BITMAPINFO*>(&info),
                  DIB_RGB_COLORS);
    }
    return formatOf(info.header.biBitCount, info.header.biCompression, info.masksOrColors[0]);
}

DibRecord::DibRecord() {
    info_.header.bV4Size = sizeof info_.header;
    info_.header.bV4Planes = 1;
    info_.header.bV4V4Compression = BI_RGB;
    info_.header.bV4CSType = colorSpaceSrgb;
}

void DibRecord::setFormat(PixelFormat format) {
    BITMAPV4HEADER& header = info_.header;
    const auto set = [&header](WORD bitCount, DWORD compression, DWORD red, DWORD green, DWORD blue) {
        header.bV4BitCount = bitCount;
        header.bV4V4Compression = compression;
        header.bV4RedMask = red;
        header.bV4GreenMask = green;
        header.bV4BlueMask = blue;
        header.bV4ClrUsed = 0;
    };
    set(0, BI_RGB, 0, 0, 0); // of Unspecified, and of numbers that are no format
    switch (format) {
    case PixelFormat::Pal8:
        set(8, BI_RGB, 0, 0, 0);
        header.bV4ClrUsed = 256;
        std::fill(std::begin(info_.colors), std::end(info_.colors), RGBQUAD{});
        break;
    case PixelFormat::Rgb15:
        set(16, BI_BITFIELDS, 0x7C00, 0x03E0, 0x001F);
        break;
    case PixelFormat::Rgb16:
        set(16, BI_BITFIELDS, redMask565, 0x07E0, 0x001F);
        break;
    case PixelFormat::Rgb24:
        set(24, BI_RGB, 0, 0, 0);
        break;
    case PixelFormat::Rgb32:
        set(32, BI_BITFIELDS, 0xFF0000, 0x00FF00, 0x0000FF);
        break;
    case PixelFormat::Unspecified:
        break;
    }
}

void DibRecord::setSize(long width, long height) {
    info_.header.bV4Width = width;
    // Negated without overflow: the smallest height, which no bitmap can have, stays as it is.
    info_.header.bV4Height = static_cast<LONG>(0u - static_cast<std::uint32_t>(height));
}

PixelFormat DibRecord::headerFormat() const {
    return formatOf(info_.header.bV4BitCount, info_.header.bV4V4Compression, info_.header.bV4RedMask);
}

// Whether the bits of a row and the bytes of the bitmap can be counted in 31 bits, so that no size computed
// by GDI can wrap around.
bool DibRecord::hasValidSize() const {
    const std::int64_t width = info_.header.bV4Width;
    const std::int64_t height = std::abs(std::int64_t{info_.header.bV4Height});
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    const std::int64_t rowBits = width * info_.header.bV4BitCount + 31;
    const std::int64_t stride = rowBits / 32 * 4;
    return width > 0 && height > 0 && stride > 0 && rowBits <= most && height <= most / stride;
}

bool DibRecord::createSection() {
    const WindowDc screen(nullptr);
    void* memory = nullptr;
    UniqueBitmap bitmap(CreateDIBSection(screen.get(), reinterpret_cast<const BITMAPINFO*>(&info_),
                                         DIB_RGB_COLORS, &memory, nullptr, 0));
    const BufferBits bits = dibBits(bitmap.get());
    const std::int64_t width = info_.header.bV4Width;
    if (!bits.bits || bits.extent.width < width ||
        bits.extent.height < std::abs(std::int64_t{info_.header.bV4Height}) ||
        bits.stride < width * bytesPerPixel(bits.format)) {
        return false;
    }
    bitmap_ = std::move(bitmap);
    bits_ = bits;
    return true;
}

bool DibRecord::create(HPALETTE palette) {
    if (bitmap_) {
        return false;
    }
    if (info_.header.bV4BitCount == 8 && palette) {
        loadColors(palette);
    }
    if (!hasValidSize()) {
        return false;
    }
    if (createSection()) {
        return true;
    }
    const DWORD wanted = std::exchange(info_.header.bV4V4Compression, BI_RGB);
    if (createSection()) {
        return true;
    }
    info_.header.bV4V4Compression = wanted; // the format is the next bitmap's too
    return false;
}

void DibRecord::destroy() {
    bitmap_.reset();
    bits_ = {};
}

void DibRecord::loadColors(HPALETTE palette) {
    std::array<PALETTEENTRY, 256> entries{};
    GetPaletteEntries(palette, 0, static_cast<UINT>(entries.size()), entries.data());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        info_.colors[i] = {entries[i].peBlue, entries[i].peGreen, entries[i].peRed, 0};
    }
}

} // namespace talx
