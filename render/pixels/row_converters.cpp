// Row converters: table look-ups and packing, each a loop over whole rows.
#include "render/pixels/row_converters.h"

#include "render/pixels/pixel_rows.h"

namespace talx {
namespace {

// The inner loops see only locals: what a lambda holds by reference would be read again after every store.
template <class Pack>
void packRows(const PixelRows& destination, const ConstPixelRows& red, const ConstPixelRows& green,
              const ConstPixelRows& blue, Extent extent, Pack pack) {
    using Pixel = decltype(pack(0U, 0U, 0U));
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* r = red.data + y * red.stride;
        const std::uint8_t* g = green.data + y * green.stride;
        const std::uint8_t* b = blue.data + y * blue.stride;
        writeRow<Pixel>(destination.data + y * destination.stride, extent.width,
                        [=](std::ptrdiff_t x) { return pack(r[x], g[x], b[x]); });
    }
}

// first or second, chosen without a branch: masks of noisy images cannot be predicted.
template <class Word>
Word choose(bool chooseFirst, Word first, Word second) {
    const auto keep = static_cast<Word>(-static_cast<int>(chooseFirst));
    return static_cast<Word>(second ^ ((first ^ second) & keep));
}
ColorEntry choose(bool chooseFirst, ColorEntry first, ColorEntry second) {
    return fromRgbWord(choose(chooseFirst, toRgb32(first), toRgb32(second)));
}

// A byte of the mask colour as the 16-bit arithmetic takes it: sign-extended.
std::int32_t signedByte(std::uint32_t word, int shift) {
    return static_cast<std::int8_t>(word >> shift);
}

} // namespace

template <class Entry>
void convertGrey8(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                  const Entry* table) {
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* in = source.data + y * source.stride;
        writeRow<Entry>(destination.data + y * destination.stride, extent.width,
                        [=](std::ptrdiff_t x) { return table[in[x]]; });
    }
}

template <class Entry>
void convertGrey16(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                   const Entry* table, std::uint32_t maxValue) {
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* in = source.data + y * source.stride;
        writeRow<Entry>(destination.data + y * destination.stride, extent.width, [=](std::ptrdiff_t x) {
            return table[loadPixel<std::uint16_t>(in + 2 * x) & maxValue];
        });
    }
}

template <class Entry>
void convertMaskedRange16(const PixelRows& destination, const ConstPixelRows& source,
                          const ConstPixelRows& mask, Extent extent, const Entry* table,
                          std::uint32_t maxValue, Entry maskPixel) {
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        const std::uint8_t* in = source.data + y * source.stride;
        const std::uint8_t* visible = mask.data + y * mask.stride;
        writeRow<Entry>(destination.data + y * destination.stride, extent.width, [=](std::ptrdiff_t x) {
            const Entry shown = table[loadPixel<std::uint16_t>(in + 2 * x) & maxValue];
            return choose(visible[x] != 0, shown, maskPixel);
        });
    }
}

template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint8_t*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint16_t*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const ColorEntry*);
template void convertGrey8(const PixelRows&, const ConstPixelRows&, Extent, const std::uint32_t*);

template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const std::uint16_t*,
                            std::uint32_t);
template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const ColorEntry*,
                            std::uint32_t);
template void convertGrey16(const PixelRows&, const ConstPixelRows&, Extent, const std::uint32_t*,
                            std::uint32_t);

template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const std::uint16_t*, std::uint32_t, std::uint16_t);
template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const ColorEntry*, std::uint32_t, ColorEntry);
template void convertMaskedRange16(const PixelRows&, const ConstPixelRows&, const ConstPixelRows&, Extent,
                                   const std::uint32_t*, std::uint32_t, std::uint32_t);

void convertColor(PixelFormat format, const PixelRows& destination, const ConstPixelRows& red,
                  const ConstPixelRows& green, const ConstPixelRows& blue, Extent extent) {
    using U32 = std::uint32_t;
    const auto pack = [&](auto pixel) {
        packRows(destination, red, green, blue, extent, pixel);
    };
    switch (format) {
    case PixelFormat::Rgb15:
        return pack([](U32 r, U32 g, U32 b) { return toRgb15(r, g, b); });
    case PixelFormat::Rgb16:
        return pack([](U32 r, U32 g, U32 b) { return toRgb16(r, g, b); });
    case PixelFormat::Rgb24:
        return pack([](U32 r, U32 g, U32 b) { return fromRgbWord(toRgb32(r, g, b)); });
    case PixelFormat::Rgb32:
        return pack([](U32 r, U32 g, U32 b) { return toRgb32(r, g, b); });
    case PixelFormat::Pal8:
    case PixelFormat::Unspecified:
        return;
    }
}

std::uint16_t maskPixel15(std::uint32_t word) {
    const std::uint32_t hi = signedByte(word, 16) & 0xFFF8;
    const std::uint32_t mid = signedByte(word, 8) & 0xFFF8;
    return static_cast<std::uint16_t>((((hi << 5) + mid) << 2) + (signedByte(word, 0) >> 3));
}

std::uint16_t maskPixel16(std::uint32_t word) {
    const std::uint32_t hi = signedByte(word, 16) & 0xFFF8;
    const std::uint32_t mid = signedByte(word, 8) & 0xFFFC;
    return static_cast<std::uint16_t>((((hi << 4) + mid) << 4) + (signedByte(word, 0) >> 3));
}

ColorEntry maskPixel24(std::uint32_t word) {
    return fromRgbWord(word);
}

} // namespace talx
