// Sampling rows for AVX-512 with byte permutes: up to 64 bytes at a time out of 64 or 128 of the source.
#include "render/pixels/avx512.h"

#include <algorithm>
#include <cstring>

namespace talx {
namespace {

constexpr std::int32_t blockBytes = 64;

// Some pixels that follow each other, and which bytes of the window each of their bytes is.
struct Block {
    std::int32_t from; // of the window, in bytes of the source row
    std::int32_t to;   // of the first pixel, in bytes of the destination row
    std::uint8_t window[blockBytes];
};

// Every block writes 64 bytes; the next one overwrites those that were not its own.
template <bool Wide>
TALX_AVX512 void sampleRow(std::uint8_t* out, const std::uint8_t* in, const SamplePlan& plan) {
    const auto* block = reinterpret_cast<const Block*>(plan.steps.data());
    const auto* const end = block + plan.steps.size() / sizeof(Block);
    for (; block != end; ++block) {
        const __m512i order = _mm512_loadu_si512(block->window);
        const __m512i first = _mm512_loadu_si512(in + block->from);
        __m512i picked;
        if constexpr (Wide)
            picked =
                _mm512_permutex2var_epi8(first, order, _mm512_loadu_si512(in + block->from + blockBytes));
        else
            picked = _mm512_permutexvar_epi8(order, first);
        storePart(out + block->to, picked, plan.rowBytes - block->to);
    }
}

// How many of the columns from first on make a block.
std::size_t blockLength(const std::vector<std::int32_t>& columns, std::size_t first, int bytes,
                        std::int32_t windowBytes) {
    const std::size_t most = std::min(columns.size(), first + blockBytes / bytes);
    const std::int32_t reach = columns[first] + windowBytes / bytes;
    std::size_t last = first + 1;
    while (last < most && columns[last] < reach)
        ++last;
    return last - first;
}

bool planRows(SamplePlan& plan, const std::vector<std::int32_t>& columns, std::int32_t sourceWidth,
              int bytes) {
    const std::int64_t sourceBytes = std::int64_t{sourceWidth} * bytes;
    const std::int64_t rowBytes = static_cast<std::int64_t>(columns.size()) * bytes;
    if (rowBytes < blockBytes || rowBytes > INT32_MAX || sourceBytes > INT32_MAX ||
        !std::is_sorted(columns.begin(), columns.end()))
        return false;
    for (const std::int32_t windowBytes : {blockBytes, 2 * blockBytes}) {
        std::size_t blocks = 0;
        for (std::size_t x = 0; x < columns.size(); ++blocks)
            x += blockLength(columns, x, bytes, windowBytes);
        // Half filled blocks are better filled from a wider window, nearly empty ones not worth it.
        const bool wide = windowBytes > blockBytes;
        const std::size_t most = columns.size() / (wide ? 8 : blockBytes / bytes * 3 / 4) + 1;
        if (sourceBytes < windowBytes || blocks * sizeof(Block) > 10 * columns.size())
            return false;
        if (blocks > most)
            continue;
        plan.steps.resize(blocks * sizeof(Block));
        auto* block = reinterpret_cast<Block*>(plan.steps.data());
        for (std::size_t x = 0; x < columns.size(); ++block) {
            const std::size_t count = blockLength(columns, x, bytes, windowBytes);
            block->from = std::min(columns[x] * bytes, static_cast<std::int32_t>(sourceBytes) - windowBytes);
            block->to = static_cast<std::int32_t>(x) * bytes;
            for (std::size_t i = 0; i < count * bytes; ++i)
                block->window[i] = static_cast<std::uint8_t>(
                    columns[x + i / bytes] * bytes + static_cast<std::int32_t>(i) % bytes - block->from);
            x += count;
        }
        plan.rowBytes = rowBytes;
        plan.loop = wide ? sampleRow<true> : sampleRow<false>;
        return true;
    }
    return false;
}

} // namespace

void takeAvx512Kernels(Versions& versions) {
    versions.samplePlanners = {planRows, versions.samplePlanners[0]};
}

} // namespace talx
