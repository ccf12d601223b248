// Row converters for AVX2: 32 pixels at a time. Look-ups in tables are no faster than the plain ones, except
// in that of the grey ramp, which needs none.
#include "render/pixels/avx2.h"

#include <algorithm>

namespace talx {
namespace {

// 32 pixels, from planes of 32 bytes.

TALX_AVX2_INLINE void storePixels32(std::uint8_t* out, __m256i blue, __m256i green, __m256i red) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i lowBG = _mm256_unpacklo_epi8(blue, green), highBG = _mm256_unpackhi_epi8(blue, green);
    const __m256i lowR = _mm256_unpacklo_epi8(red, zero), highR = _mm256_unpackhi_epi8(red, zero);
    const __m256i p0 = _mm256_unpacklo_epi16(lowBG, lowR), p1 = _mm256_unpackhi_epi16(lowBG, lowR);
    const __m256i p2 = _mm256_unpacklo_epi16(highBG, highR), p3 = _mm256_unpackhi_epi16(highBG, highR);
    store32(out, _mm256_permute2x128_si256(p0, p1, 0x20));
    store32(out + 32, _mm256_permute2x128_si256(p2, p3, 0x20));
    store32(out + 64, _mm256_permute2x128_si256(p0, p1, 0x31));
    store32(out + 96, _mm256_permute2x128_si256(p2, p3, 0x31));
}

// Which byte of a plane's 16 goes to each byte of 48: the shuffles of one channel, three times 16.
struct PackOrder {
    alignas(16) std::int8_t of[3][3][16]; // by channel and by part of the 48 bytes
};
constexpr PackOrder packOrder = [] {
    PackOrder order{};
    for (int t = 0; t < 48; ++t) {
        for (int channel = 0; channel < 3; ++channel)
            order.of[channel][t / 16][t % 16] = static_cast<std::int8_t>(t % 3 == channel ? t / 3 : -1);
    }
    return order;
}();
TALX_AVX2_INLINE __m256i spread(__m256i plane, int channel, int part) {
    return _mm256_shuffle_epi8(plane, _mm256_broadcastsi128_si256(load16(packOrder.of[channel][part])));
}
// Each lane makes 48 bytes of its own 16 pixels.
TALX_AVX2_INLINE void storePixels24(std::uint8_t* out, __m256i blue, __m256i green, __m256i red) {
    __m256i lanes[3];
    for (int part = 0; part < 3; ++part)
        lanes[part] = _mm256_or_si256(_mm256_or_si256(spread(blue, 0, part), spread(green, 1, part)),
                                      spread(red, 2, part));
    store32(out, _mm256_permute2x128_si256(lanes[0], lanes[1], 0x20));
    store32(out + 32, _mm256_permute2x128_si256(lanes[2], lanes[0], 0x30));
    store32(out + 64, _mm256_permute2x128_si256(lanes[1], lanes[2], 0x31));
}

// Bytes shifted within themselves, then cut out by a mask.
TALX_AVX2_INLINE __m256i shiftedLeft(__m256i bytes, int count, int mask) {
    return _mm256_and_si256(_mm256_slli_epi16(bytes, count), _mm256_set1_epi8(static_cast<char>(mask)));
}
TALX_AVX2_INLINE __m256i shiftedRight(__m256i bytes, int count, int mask) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, count), _mm256_set1_epi8(static_cast<char>(mask)));
}
TALX_AVX2_INLINE void storePixels16(std::uint8_t* out, __m256i low, __m256i high) {
    const __m256i first = _mm256_unpacklo_epi8(low, high), second = _mm256_unpackhi_epi8(low, high);
    store32(out, _mm256_permute2x128_si256(first, second, 0x20));
    store32(out + 32, _mm256_permute2x128_si256(first, second, 0x31));
}

// One struct a format: how planes become its pixels, 32 at a time or one.

template <int RedShift, int GreenShift>
struct To16Bits {
    static constexpr int bytes = 2;
    TALX_AVX2_INLINE void store(std::uint8_t* out, __m256i blue, __m256i green, __m256i red) {
        constexpr bool wideGreen = GreenShift == 3;
        const __m256i low =
            _mm256_or_si256(shiftedLeft(green, GreenShift, 0xE0), shiftedRight(blue, 3, 0x1F));
        const __m256i high = _mm256_or_si256(shiftedRight(red, 8 - RedShift, wideGreen ? 0xF8 : 0x7C),
                                             shiftedRight(green, 8 - GreenShift, wideGreen ? 0x07 : 0x03));
        storePixels16(out, low, high);
    }
};
using To15 = To16Bits<7, 2>;
using To16 = To16Bits<8, 3>;
struct To24 {
    static constexpr int bytes = 3;
    TALX_AVX2_INLINE void store(std::uint8_t* out, __m256i blue, __m256i green, __m256i red) {
        storePixels24(out, blue, green, red);
    }
};
struct To32 {
    static constexpr int bytes = 4;
    TALX_AVX2_INLINE void store(std::uint8_t* out, __m256i blue, __m256i green, __m256i red) {
        storePixels32(out, blue, green, red);
    }
};

// The last pixels of a row are the last 32 of it once more: what they write again is the same. Rows of less
// are left to the plain versions.
TALX_AVX2_INLINE std::ptrdiff_t nextBlock(std::ptrdiff_t x, std::ptrdiff_t width) {
    return x + 32 < width && x + 64 > width ? width - 32 : x + 32;
}

template <class To, ColorLoop Versions::*Member>
TALX_AVX2 void packRows(const PixelRows& destination, const ConstPixelRows& redRows,
                        const ConstPixelRows& greenRows, const ConstPixelRows& blueRows, Extent extent) {
    if (extent.width < 32)
        return (plainVersions().*Member)(destination, redRows, greenRows, blueRows, extent);
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        const std::uint8_t* const r = redRows.data + y * redRows.stride;
        const std::uint8_t* const g = greenRows.data + y * greenRows.stride;
        const std::uint8_t* const b = blueRows.data + y * blueRows.stride;
        for (std::ptrdiff_t x = 0; x < extent.width; x = nextBlock(x, extent.width))
            To::store(out + x * To::bytes, load32(b + x), load32(g + x), load32(r + x));
    }
}

bool isGrey(std::uint32_t level, std::uint32_t entry) {
    return entry == toRgb32(greyEntry(level));
}
bool isGrey(std::uint32_t level, ColorEntry entry) {
    return entry == greyEntry(level);
}

// The grey ramp's pixels are three times the same plane.
template <class To, class Entry, Grey8Loop<Entry> Versions::*Member>
TALX_AVX2 void grey8Rows(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                         const Entry* table) {
    bool isRamp = extent.width >= 32;
    for (std::uint32_t level = 0; isRamp && level < 256; ++level)
        isRamp = isGrey(level, table[level]);
    if (!isRamp)
        return (plainVersions().*Member)(destination, source, extent, table);
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        const std::uint8_t* const in = source.data + y * source.stride;
        for (std::ptrdiff_t x = 0; x < extent.width; x = nextBlock(x, extent.width)) {
            const __m256i grey = load32(in + x);
            To::store(out + x * To::bytes, grey, grey, grey);
        }
    }
}
// Words of a ramp are either of the 16-bit formats.
TALX_AVX2 void grey8To16(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                         const std::uint16_t* table) {
    const auto isRampOf = [&](auto pixelOf) {
        for (std::uint32_t level = 0; level < 256; ++level) {
            if (table[level] != pixelOf(greyEntry(level)))
                return false;
        }
        return extent.width >= 32;
    };
    const bool is16 = isRampOf([](ColorEntry e) { return toRgb16(e); });
    if (!is16 && !isRampOf([](ColorEntry e) { return toRgb15(e); }))
        return plainVersions().grey8To16(destination, source, extent, table);
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        const std::uint8_t* const in = source.data + y * source.stride;
        for (std::ptrdiff_t x = 0; x < extent.width; x = nextBlock(x, extent.width)) {
            const __m256i grey = load32(in + x);
            if (is16)
                To16::store(out + 2 * x, grey, grey, grey);
            else
                To15::store(out + 2 * x, grey, grey, grey);
        }
    }
}

TALX_AVX2 void narrowRow(std::uint8_t* out, const std::uint8_t* in, std::ptrdiff_t width, std::uint32_t mask,
                         int shift) {
    if (width < 32)
        return plainVersions().narrow(out, in, width, mask, shift);
    const __m256i kept = _mm256_set1_epi16(static_cast<short>(mask)), byte = _mm256_set1_epi16(0xFF);
    const __m128i bits = _mm_cvtsi32_si128(shift);
    for (std::ptrdiff_t x = 0; x < width; x = nextBlock(x, width)) {
        const __m256i low = _mm256_srl_epi16(_mm256_and_si256(load32(in + 2 * x), kept), bits);
        const __m256i high = _mm256_srl_epi16(_mm256_and_si256(load32(in + 2 * x + 32), kept), bits);
        const __m256i lanes = _mm256_packus_epi16(_mm256_and_si256(low, byte), _mm256_and_si256(high, byte));
        store32(out + x, _mm256_permute4x64_epi64(lanes, 0xD8));
    }
}

} // namespace

void takeAvx2RowConverters(Versions& versions) {
    versions.grey8To16 = grey8To16;
    versions.grey8To24 = grey8Rows<To24, ColorEntry, &Versions::grey8To24>;
    versions.grey8To32 = grey8Rows<To32, std::uint32_t, &Versions::grey8To32>;
    versions.narrow = narrowRow;
    versions.colorTo15 = packRows<To15, &Versions::colorTo15>;
    versions.colorTo16 = packRows<To16, &Versions::colorTo16>;
    versions.colorTo24 = packRows<To24, &Versions::colorTo24>;
    versions.colorTo32 = packRows<To32, &Versions::colorTo32>;
}

} // namespace talx
