// Sampling rows for AVX2: 16 bytes at a time out of up to 64 of the source.
#include "render/pixels/versions.h"

#include <immintrin.h>

#include <algorithm>

#define TALX_AVX2 __attribute__((target("avx2")))

namespace talx {
namespace {

constexpr std::int32_t blockBytes = 16;
constexpr std::int32_t mostWindows = 4; // of 16 bytes each, that follow each other in the source
constexpr std::uint8_t none = 0x80;     // a byte that comes from another window

// A block is the window's offset in the source row, four bytes, and for each window 16 bytes: which of the
// window's bytes each of the block's is. Block i goes to bytes 16 i on, the last one to the end of the row.
template <int Windows>
TALX_AVX2 void sampleRow(std::uint8_t* out, const std::uint8_t* in, const SamplePlan& plan) {
    const std::uint8_t* step = plan.steps.data();
    for (std::ptrdiff_t x = 0; x < plan.rowBytes; x += blockBytes, step += 4 + blockBytes * Windows) {
        std::int32_t from = 0;
        __builtin_memcpy(&from, step, sizeof from);
        __m128i picked = _mm_setzero_si128();
        for (int i = 0; i < Windows; ++i) {
            const auto* const window = reinterpret_cast<const __m128i*>(in + from + blockBytes * i);
            const auto* const order = reinterpret_cast<const __m128i*>(step + 4 + blockBytes * i);
            picked = _mm_or_si128(picked, _mm_shuffle_epi8(_mm_loadu_si128(window), _mm_loadu_si128(order)));
        }
        const std::ptrdiff_t to = x < plan.rowBytes - blockBytes ? x : plan.rowBytes - blockBytes;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + to), picked);
    }
}

bool planRows(SamplePlan& plan, const std::vector<std::int32_t>& columns, std::int32_t sourceWidth,
              int bytes) {
    const auto count = static_cast<std::size_t>(blockBytes / bytes);
    const std::int64_t sourceBytes = std::int64_t{sourceWidth} * bytes;
    if (columns.size() < 4 * count || sourceBytes > INT32_MAX ||
        !std::is_sorted(columns.begin(), columns.end()))
        return false;
    const std::size_t blocks = (columns.size() + count - 1) / count;
    const auto firstOf = [&](std::size_t block) {
        return std::min(block * count, columns.size() - count);
    };
    std::int32_t span = 0;
    for (std::size_t i = 0; i < blocks; ++i)
        span = std::max(span, columns[firstOf(i) + count - 1] - columns[firstOf(i)] + 1);
    const std::int64_t windows = (std::int64_t{span} * bytes + blockBytes - 1) / blockBytes;
    if (windows > mostWindows || sourceBytes < windows * blockBytes)
        return false;

    plan.steps.resize(blocks * static_cast<std::size_t>(4 + blockBytes * windows));
    std::uint8_t* step = plan.steps.data();
    for (std::size_t i = 0; i < blocks; ++i) {
        const std::int32_t* const column = &columns[firstOf(i)];
        const auto from = static_cast<std::int32_t>(
            std::min(std::int64_t{*column} * bytes, sourceBytes - windows * blockBytes));
        __builtin_memcpy(step, &from, sizeof from);
        step += sizeof from;
        for (std::int32_t window = 0; window < windows; ++window) {
            for (std::int32_t b = 0; b < blockBytes; ++b) {
                const std::int32_t at = column[b / bytes] * bytes + b % bytes - from - window * blockBytes;
                *step++ = at >= 0 && at < blockBytes ? static_cast<std::uint8_t>(at) : none;
            }
        }
    }
    plan.rowBytes = static_cast<std::ptrdiff_t>(columns.size()) * bytes;
    constexpr decltype(plan.loop) loops[] = {sampleRow<1>, sampleRow<2>, sampleRow<3>, sampleRow<4>};
    plan.loop = loops[windows - 1];
    return true;
}

} // namespace

void takeAvx2Kernels(Versions& versions) {
    versions.samplePlanners[0] = planRows;
}

} // namespace talx
