// Icon blending for AVX2: the table is looked up into the first cache pixel by pixel, which no gathering load
// beats, then eight pixels at a time are blended.
#include "render/pixels/avx2.h"

#include <cstring>

namespace talx {
namespace {

// Eight pixels of a format, taken apart into words of four bytes as the plain versions do, and put together
// again.

TALX_AVX2_INLINE __m256i masked(__m256i words, int mask) {
    return _mm256_and_si256(words, _mm256_set1_epi32(mask));
}
TALX_AVX2_INLINE __m256i either(__m256i a, __m256i b, __m256i c) {
    return _mm256_or_si256(_mm256_or_si256(a, b), c);
}
TALX_AVX2_INLINE __m256i loadHalves(const std::uint8_t* from) {
    return _mm256_cvtepu16_epi32(load16(from));
}
TALX_AVX2_INLINE void storeHalves(std::uint8_t* to, __m256i words) {
    const __m256i lanes = _mm256_packus_epi32(words, words);
    store16(to, _mm256_castsi256_si128(_mm256_permute4x64_epi64(lanes, 0x08)));
}

struct Pixels15 {
    static constexpr int bytes = 2;
    TALX_AVX2_INLINE __m256i load(const std::uint8_t* from) {
        const __m256i p = loadHalves(from), unused = _mm256_slli_epi32(_mm256_srli_epi32(p, 15), 31);
        return _mm256_or_si256(unused, either(masked(_mm256_slli_epi32(p, 9), 0xF80000),
                                              masked(_mm256_slli_epi32(p, 6), 0xF800),
                                              masked(_mm256_slli_epi32(p, 3), 0xF8)));
    }
    TALX_AVX2_INLINE void store(std::uint8_t* to, __m256i c) {
        const __m256i unused = masked(_mm256_srli_epi32(c, 16), 0xFF00);
        storeHalves(to, _mm256_add_epi32(unused, either(masked(_mm256_srli_epi32(c, 9), 0x7C00),
                                                        masked(_mm256_srli_epi32(c, 6), 0x03E0),
                                                        masked(_mm256_srli_epi32(c, 3), 0x1F))));
    }
};

struct Pixels16 {
    static constexpr int bytes = 2;
    TALX_AVX2_INLINE __m256i load(const std::uint8_t* from) {
        const __m256i p = loadHalves(from);
        return either(masked(_mm256_slli_epi32(p, 8), 0xF80000), masked(_mm256_slli_epi32(p, 5), 0xFC00),
                      masked(_mm256_slli_epi32(p, 3), 0xF8));
    }
    TALX_AVX2_INLINE void store(std::uint8_t* to, __m256i c) {
        storeHalves(to,
                    either(masked(_mm256_srli_epi32(c, 8), 0xF800), masked(_mm256_srli_epi32(c, 5), 0x07E0),
                           masked(_mm256_srli_epi32(c, 3), 0x1F)));
    }
};

struct Pixels24 {
    static constexpr int bytes = 3;
    TALX_AVX2_INLINE __m256i load(const std::uint8_t* from) {
        // The upper lane's 12 bytes are the last of its 16, so that none beyond the eight pixels is read.
        const __m256i lanes =
            _mm256_inserti128_si256(_mm256_castsi128_si256(load16(from)), load16(from + 8), 1);
        return _mm256_shuffle_epi8(
            lanes, _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, //
                                    4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1));
    }
    TALX_AVX2_INLINE void store(std::uint8_t* to, __m256i c) {
        const __m128i order = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const __m256i lanes = _mm256_shuffle_epi8(c, _mm256_broadcastsi128_si256(order));
        const __m256i packed = _mm256_permutevar8x32_epi32(lanes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        store16(to, _mm256_castsi256_si128(packed));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 16), _mm256_extracti128_si256(packed, 1));
    }
};

struct Pixels32 {
    static constexpr int bytes = 4;
    TALX_AVX2_INLINE __m256i load(const std::uint8_t* from) { return load32(from); }
    TALX_AVX2_INLINE void store(std::uint8_t* to, __m256i c) { store32(to, c); }
};

// Bytes are multiplied as signed ones by unsigned weights up to 128, so they are moved down by 128 here and
// up again afterwards: as the weights add up to 128, that changes nothing.
TALX_AVX2_INLINE __m256i moved(__m256i bytes) {
    return _mm256_xor_si256(bytes, _mm256_set1_epi8(-128));
}

template <class Pixels>
TALX_AVX2_INLINE void blend8(std::uint8_t* out, const std::uint32_t* colors, const std::uint32_t* weights) {
    const __m256i before = moved(Pixels::load(out)), color = moved(load32(colors)), weight = load32(weights);
    const __m256i rest = _mm256_sub_epi8(_mm256_set1_epi8(-128), weight); // 128 - weight
    const __m256i low =
        _mm256_maddubs_epi16(_mm256_unpacklo_epi8(weight, rest), _mm256_unpacklo_epi8(before, color));
    const __m256i high =
        _mm256_maddubs_epi16(_mm256_unpackhi_epi8(weight, rest), _mm256_unpackhi_epi8(before, color));
    Pixels::store(out, moved(_mm256_packs_epi16(_mm256_srai_epi16(low, 7), _mm256_srai_epi16(high, 7))));
}

template <class Pixels>
TALX_AVX2 void blendRows(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
                         const BlendTable& table) {
    constexpr std::ptrdiff_t most = 256; // pixels looked up before they are blended
    std::uint32_t colors[most] = {}, weights[most] = {};
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        for (std::ptrdiff_t first = 0; first < extent.width; first += most) {
            std::uint8_t* const out = buffer.data + y * buffer.stride + first * Pixels::bytes;
            const std::uint8_t* const in = icon.data + y * icon.stride + first;
            const std::ptrdiff_t count = extent.width - first < most ? extent.width - first : most;
            for (std::ptrdiff_t x = 0; x < count; ++x) {
                colors[x] = table.color[in[x]];
                weights[x] = table.weight[in[x]];
            }
            std::ptrdiff_t x = 0;
            for (; x + 8 <= count; x += 8)
                blend8<Pixels>(out + x * Pixels::bytes, colors + x, weights + x);
            if (x < count) {
                std::uint8_t rest[8 * Pixels::bytes] = {};
                const auto bytes = static_cast<std::size_t>((count - x) * Pixels::bytes);
                std::memcpy(rest, out + x * Pixels::bytes, bytes);
                blend8<Pixels>(rest, colors + x, weights + x);
                std::memcpy(out + x * Pixels::bytes, rest, bytes);
            }
        }
    }
}

} // namespace

void takeAvx2IconBlend(Versions& versions) {
    versions.blend15 = blendRows<Pixels15>;
    versions.blend16 = blendRows<Pixels16>;
    versions.blend24 = blendRows<Pixels24>;
    versions.blend32 = blendRows<Pixels32>;
}

} // namespace talx
