// What the AVX2 versions share. Everything here is inlined into functions of this instruction set and takes
// part in no other code.
#pragma once

#include "render/pixels/versions.h"

#include <immintrin.h>

#define TALX_AVX2 __attribute__((target("avx2")))
#define TALX_AVX2_INLINE __attribute__((target("avx2"), always_inline)) static inline

namespace talx {
namespace {

TALX_AVX2_INLINE __m256i load32(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
TALX_AVX2_INLINE void store32(void* to, __m256i bytes) {
    _mm256_storeu_si256(static_cast<__m256i*>(to), bytes);
}
TALX_AVX2_INLINE __m128i load16(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
TALX_AVX2_INLINE void store16(void* to, __m128i bytes) {
    _mm_storeu_si128(static_cast<__m128i*>(to), bytes);
}

} // namespace
} // namespace talx
