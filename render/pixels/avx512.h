// What the AVX-512 versions share. Everything here is inlined into functions of this instruction set and
// takes part in no other code.
#pragma once

#include "render/pixels/versions.h"

#include <immintrin.h>

#define TALX_AVX512_TARGET target("avx512f,avx512bw,avx512vl,avx512vbmi")
#define TALX_AVX512 __attribute__((TALX_AVX512_TARGET))
#define TALX_AVX512_INLINE __attribute__((TALX_AVX512_TARGET, always_inline)) static inline

namespace talx {
namespace {

// The lowest count of 64 bits, for any count.
inline std::uint64_t lowBits(std::ptrdiff_t count) {
    return count >= 64 ? ~std::uint64_t{0} : count <= 0 ? 0 : (std::uint64_t{1} << count) - 1;
}

// Loads and stores of up to 64 bytes: none beyond count is touched.
TALX_AVX512_INLINE __m512i loadPart(const std::uint8_t* from, std::ptrdiff_t count) {
    return count >= 64 ? _mm512_loadu_si512(from) : _mm512_maskz_loadu_epi8(lowBits(count), from);
}
TALX_AVX512_INLINE void storePart(std::uint8_t* to, __m512i bytes, std::ptrdiff_t count) {
    if (count >= 64)
        _mm512_storeu_si512(to, bytes);
    else if (count > 0)
        _mm512_mask_storeu_epi8(to, lowBits(count), bytes);
}

// One byte of each of a table's 256 entries.
struct BytePlane {
    __m512i part[4];
};

// 64 look-ups. upper tells which of the indices are 128 and above.
TALX_AVX512_INLINE __m512i lookUp(const BytePlane& plane, __m512i indices, __mmask64 upper) {
    return _mm512_mask_blend_epi8(upper, _mm512_permutex2var_epi8(plane.part[0], indices, plane.part[1]),
                                  _mm512_permutex2var_epi8(plane.part[2], indices, plane.part[3]));
}

// Byte number Byte of 64 entries, which are four vectors of 32-bit words.
template <int Byte>
TALX_AVX512_INLINE __m512i byteOf(const __m512i (&words)[4]) {
    __m512i bytes = _mm512_zextsi128_si512(_mm512_cvtepi32_epi8(_mm512_srli_epi32(words[0], 8 * Byte)));
    bytes = _mm512_inserti32x4(bytes, _mm512_cvtepi32_epi8(_mm512_srli_epi32(words[1], 8 * Byte)), 1);
    bytes = _mm512_inserti32x4(bytes, _mm512_cvtepi32_epi8(_mm512_srli_epi32(words[2], 8 * Byte)), 2);
    return _mm512_inserti32x4(bytes, _mm512_cvtepi32_epi8(_mm512_srli_epi32(words[3], 8 * Byte)), 3);
}
template <int Byte>
TALX_AVX512_INLINE BytePlane planeOf(const std::uint32_t* entries) {
    BytePlane plane;
    for (int i = 0; i < 4; ++i) {
        const __m512i words[4] = {
            _mm512_loadu_si512(entries + 64 * i), _mm512_loadu_si512(entries + 64 * i + 16),
            _mm512_loadu_si512(entries + 64 * i + 32), _mm512_loadu_si512(entries + 64 * i + 48)};
        plane.part[i] = byteOf<Byte>(words);
    }
    return plane;
}

// Puts four planes of 64 bytes together to 32-bit words, the first plane lowest. The planes are in the order
// that spreadForWords() gives, the words leave in the order of the pixels.
TALX_AVX512_INLINE void interleave(__m512i b0, __m512i b1, __m512i b2, __m512i b3, __m512i (&words)[4]) {
    const __m512i low01 = _mm512_unpacklo_epi8(b0, b1), high01 = _mm512_unpackhi_epi8(b0, b1);
    const __m512i low23 = _mm512_unpacklo_epi8(b2, b3), high23 = _mm512_unpackhi_epi8(b2, b3);
    words[0] = _mm512_unpacklo_epi16(low01, low23);
    words[1] = _mm512_unpackhi_epi16(low01, low23);
    words[2] = _mm512_unpacklo_epi16(high01, high23);
    words[3] = _mm512_unpackhi_epi16(high01, high23);
}
// 64 bytes in the order in which unpacking them twice within 16-byte lanes puts each into its place.
TALX_AVX512_INLINE __m512i spreadForWords(__m512i bytes) {
    return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15),
                                    bytes);
}

} // namespace
} // namespace talx
