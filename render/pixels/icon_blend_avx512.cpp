// Icon blending for AVX-512 with byte permutes: 64 pixels at a time, the table in registers.
#include "render/pixels/avx512.h"

namespace talx {
namespace {

// 16 pixels of a format, taken apart into words of four bytes as the plain versions do, and put together
// again: all 16, or those of a mask, which takes longer.

template <bool All>
TALX_AVX512_INLINE __m512i load16(const std::uint8_t* from, __mmask16 which) {
    return _mm512_cvtepu16_epi32(All ? _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))
                                     : _mm256_maskz_loadu_epi16(which, from));
}
template <bool All>
TALX_AVX512_INLINE void store16(std::uint8_t* to, __m512i words, __mmask16 which) {
    if constexpr (All)
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_cvtepi32_epi16(words));
    else
        _mm256_mask_storeu_epi16(to, which, _mm512_cvtepi32_epi16(words));
}

struct Pixels15 {
    static constexpr int bytes = 2;
    template <bool All>
    TALX_AVX512_INLINE __m512i load(const std::uint8_t* from, __mmask16 which) {
        const __m512i p = load16<All>(from, which);
        const __m512i unused = _mm512_slli_epi32(_mm512_srli_epi32(p, 15), 31);
        const __m512i red = _mm512_and_si512(_mm512_slli_epi32(p, 9), _mm512_set1_epi32(0xF80000));
        const __m512i green = _mm512_and_si512(_mm512_slli_epi32(p, 6), _mm512_set1_epi32(0xF800));
        const __m512i blue = _mm512_and_si512(_mm512_slli_epi32(p, 3), _mm512_set1_epi32(0xF8));
        return _mm512_or_si512(_mm512_or_si512(unused, red), _mm512_or_si512(green, blue));
    }
    template <bool All>
    TALX_AVX512_INLINE void store(std::uint8_t* to, __m512i c, __mmask16 which) {
        const __m512i unused = _mm512_and_si512(_mm512_srli_epi32(c, 16), _mm512_set1_epi32(0xFF00));
        const __m512i red = _mm512_and_si512(_mm512_srli_epi32(c, 9), _mm512_set1_epi32(0x7C00));
        const __m512i green = _mm512_and_si512(_mm512_srli_epi32(c, 6), _mm512_set1_epi32(0x03E0));
        const __m512i blue = _mm512_and_si512(_mm512_srli_epi32(c, 3), _mm512_set1_epi32(0x1F));
        const __m512i colors = _mm512_or_si512(_mm512_or_si512(red, green), blue);
        store16<All>(to, _mm512_add_epi32(unused, colors), which);
    }
};

struct Pixels16 {
    static constexpr int bytes = 2;
    template <bool All>
    TALX_AVX512_INLINE __m512i load(const std::uint8_t* from, __mmask16 which) {
        const __m512i p = load16<All>(from, which);
        const __m512i red = _mm512_and_si512(_mm512_slli_epi32(p, 8), _mm512_set1_epi32(0xF80000));
        const __m512i green = _mm512_and_si512(_mm512_slli_epi32(p, 5), _mm512_set1_epi32(0xFC00));
        const __m512i blue = _mm512_and_si512(_mm512_slli_epi32(p, 3), _mm512_set1_epi32(0xF8));
        return _mm512_or_si512(_mm512_or_si512(red, green), blue);
    }
    template <bool All>
    TALX_AVX512_INLINE void store(std::uint8_t* to, __m512i c, __mmask16 which) {
        const __m512i red = _mm512_and_si512(_mm512_srli_epi32(c, 8), _mm512_set1_epi32(0xF800));
        const __m512i green = _mm512_and_si512(_mm512_srli_epi32(c, 5), _mm512_set1_epi32(0x07E0));
        const __m512i blue = _mm512_and_si512(_mm512_srli_epi32(c, 3), _mm512_set1_epi32(0x1F));
        const __m512i colors = _mm512_or_si512(_mm512_or_si512(red, green), blue);
        store16<All>(to, colors, which);
    }
};

struct Pixels24 {
    static constexpr int bytes = 3;
    template <bool All>
    TALX_AVX512_INLINE __m512i load(const std::uint8_t* from, __mmask16 which) {
        // Each 16-byte lane takes the 12 bytes of its four pixels.
        const __m512i lanes = _mm512_permutexvar_epi32(
            _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), part<All>(from, which));
        const __m512i order =
            _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
        return _mm512_shuffle_epi8(lanes, order);
    }
    template <bool All>
    TALX_AVX512_INLINE void store(std::uint8_t* to, __m512i c, __mmask16 which) {
        const __m512i order =
            _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
        const __m512i packed = _mm512_permutexvar_epi32(
            _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15),
            _mm512_shuffle_epi8(c, order));
        if constexpr (All) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_castsi512_si256(packed));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 32), _mm512_extracti32x4_epi32(packed, 2));
        } else {
            _mm512_mask_storeu_epi8(to, bytesOf(which), packed);
        }
    }

private:
    TALX_AVX512_INLINE __mmask64 bytesOf(__mmask16 which) { return lowBits(3 * __builtin_popcount(which)); }
    template <bool All>
    TALX_AVX512_INLINE __m512i part(const std::uint8_t* from, __mmask16 which) {
        if constexpr (All) {
            const auto* const first = reinterpret_cast<const __m256i*>(from);
            const auto* const last = reinterpret_cast<const __m128i*>(from + 32);
            return _mm512_inserti32x4(_mm512_castsi256_si512(_mm256_loadu_si256(first)),
                                      _mm_loadu_si128(last), 2);
        }
        return _mm512_maskz_loadu_epi8(bytesOf(which), from);
    }
};

struct Pixels32 {
    static constexpr int bytes = 4;
    template <bool All>
    TALX_AVX512_INLINE __m512i load(const std::uint8_t* from, __mmask16 which) {
        return All ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi32(which, from);
    }
    template <bool All>
    TALX_AVX512_INLINE void store(std::uint8_t* to, __m512i c, __mmask16 which) {
        if constexpr (All)
            _mm512_storeu_si512(to, c);
        else
            _mm512_mask_storeu_epi32(to, which, c);
    }
};

// Bytes are multiplied as signed ones by unsigned weights up to 128, so they are moved down by 128 here and
// up again afterwards: as the weights add up to 128, that changes nothing.
TALX_AVX512_INLINE __m512i moved(__m512i bytes) {
    return _mm512_xor_si512(bytes, _mm512_set1_epi8(-128));
}

template <class Pixels, bool All>
TALX_AVX512_INLINE void blend16(std::uint8_t* out, __m512i color, __m512i weight, __mmask16 which) {
    const __m512i before = moved(Pixels::template load<All>(out, which));
    const __m512i rest = _mm512_sub_epi8(_mm512_set1_epi8(-128), weight); // 128 - weight
    const __m512i low =
        _mm512_maddubs_epi16(_mm512_unpacklo_epi8(weight, rest), _mm512_unpacklo_epi8(before, color));
    const __m512i high =
        _mm512_maddubs_epi16(_mm512_unpackhi_epi8(weight, rest), _mm512_unpackhi_epi8(before, color));
    const __m512i mixed = _mm512_packs_epi16(_mm512_srai_epi16(low, 7), _mm512_srai_epi16(high, 7));
    Pixels::template store<All>(out, moved(mixed), which);
}

struct BlendPlanes {
    BytePlane blue, green, red, weight, topWeight;
};

// Up to 64 pixels.
template <class Pixels, bool All>
TALX_AVX512_INLINE void blend64(std::uint8_t* out, const std::uint8_t* in, const BlendPlanes& table,
                                std::ptrdiff_t count) {
    const __m512i indices = spreadForWords(loadPart(in, count));
    const __mmask64 upper = _mm512_movepi8_mask(indices);
    const __m512i nothing = moved(_mm512_setzero_si512()), a = lookUp(table.weight, indices, upper);
    __m512i colors[4], weights[4];
    interleave(lookUp(table.blue, indices, upper), lookUp(table.green, indices, upper),
               lookUp(table.red, indices, upper), nothing, colors);
    interleave(a, a, a, lookUp(table.topWeight, indices, upper), weights);
    for (int i = 0; i < 4; ++i) {
        blend16<Pixels, All>(out + 16 * i * Pixels::bytes, colors[i], weights[i],
                             static_cast<__mmask16>(lowBits(count) >> 16 * i));
    }
}

template <class Pixels>
TALX_AVX512 void blendRows(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
                           const BlendTable& table) {
    const std::uint32_t* const colors = table.color.data();
    BlendPlanes planes{planeOf<0>(colors), planeOf<1>(colors), planeOf<2>(colors),
                       planeOf<0>(table.weight.data()), planeOf<3>(table.weight.data())};
    for (BytePlane* plane : {&planes.blue, &planes.green, &planes.red}) {
        for (__m512i& part : plane->part)
            part = moved(part);
    }
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = buffer.data + y * buffer.stride;
        const std::uint8_t* const in = icon.data + y * icon.stride;
        std::ptrdiff_t x = 0;
        for (; x + 64 <= extent.width; x += 64)
            blend64<Pixels, true>(out + x * Pixels::bytes, in + x, planes, 64);
        if (x < extent.width)
            blend64<Pixels, false>(out + x * Pixels::bytes, in + x, planes, extent.width - x);
    }
}

} // namespace

void takeAvx512IconBlend(Versions& versions) {
    versions.blend15 = blendRows<Pixels15>;
    versions.blend16 = blendRows<Pixels16>;
    versions.blend24 = blendRows<Pixels24>;
    versions.blend32 = blendRows<Pixels32>;
}

} // namespace talx
