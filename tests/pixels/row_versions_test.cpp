// Every version of every inner loop against the plain one: every length at every alignment, sources against a
// fence, the stack in every phase in which 64-bit Windows may call a function.
#include "render/pixels/color_maps.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/kernels.h"
#include "render/pixels/versions.h"
#include "tests/pixels/random_rows.h"

#include <functional>

namespace talx::test {
namespace {

using enum PixelFormat;

constexpr int longest = 200, kernelRows = 10;
const FencedMemory sources[] = {FencedMemory(1 << 16), FencedMemory(1 << 16), FencedMemory(1 << 16)};

// Draws n pixels, or rows of n pixels. shift is how far their sources are from the fence.
using Loop = std::function<void(const PixelRows& out, int n, int shift)>;

ConstPixelRows source(int number, int bytes, int shift) {
    return {sources[number].endingAtFence(static_cast<std::size_t>(bytes + shift)), 0};
}

template <PixelFormat Format, PixelFormat... More>
void addLoops(Random& random, std::vector<Loop>& loops) {
    using Entry = TableEntry<Format>;
    std::vector<Entry> colors(65536), runs(1024), ramp(256);
    random.fill(colors.data(), colors.size() * sizeof(Entry));
    IconTables tables;
    for (std::uint32_t v = 0; v < 256; ++v) {
        const std::uint32_t grey = toPixel(Format, greyEntry(v));
        std::memcpy(static_cast<void*>(&ramp[v]), &grey, sizeof(Entry));
        std::fill_n(&runs[4 * v], 4, colors[v]);
        tables.weight[v] = static_cast<std::uint8_t>(random.oneOf({0, 64, 128, random.between(0, 128)}));
        tables.color[v] = toPixel(Format, fromRgbWord(random.word()));
    }
    for (const auto& table : {colors, ramp}) {
        loops.push_back([table](const PixelRows& out, int n, int shift) {
            convertGrey8(out, source(0, n, shift), {n, 1}, table.data());
        });
    }
    if constexpr (Format != Pal8) {
        // The same row so many times that a table's runs are looked for.
        for (const auto& [table, height] : {std::pair(runs, 4096), std::pair(colors, 1)}) {
            loops.push_back([table = table, height = height](const PixelRows& out, int n, int shift) {
                convertMaskedRange16({out.data, 0}, source(0, 2 * n, shift), source(1, n, shift),
                                     {n, height / std::max(n, 1) + 1}, table.data(),
                                     static_cast<std::uint32_t>(table.size()) - 1, table[77]);
            });
        }
    }
    loops.push_back([=](const PixelRows& out, int n, int shift) {
        blendIcon(Format, out, source(0, n, shift), {n, 1}, tables);
    });
    loops.push_back([](const PixelRows& out, int n, int shift) {
        convertColor(Format, out, source(0, n, shift), source(1, n, 0), source(2, n, shift / 2), {n, 1});
    });
    if constexpr (sizeof...(More) > 0)
        addLoops<More...>(random, loops);
}

constexpr std::pair<decltype(&resampleNearest8), int> kernels[] = {
    {resampleNearest8, 1}, {resampleNearest16, 2}, {resampleCentre8, 1}, {resampleCentre16, 2}};

[[gnu::noinline]] void runOnMovedStack(int phase, const std::function<void()>& run) {
    *static_cast<volatile char*>(__builtin_alloca(16 + 16 * (phase % 4))) = 0;
    run();
}

TEST(Versions, WriteWhatThePlainOnesWrite) {
    Random random(0);
    std::vector<Loop> loops;
    addLoops<Pal8, Rgb15, Rgb16, Rgb24, Rgb32>(random, loops);
    for (const auto& [kernel, bytes] : kernels) {
        for (const double scale : {0.1, 0.26, 0.37, 0.8, 1.3, 2.5, 3.0, 40.0}) {
            loops.push_back([=, draw = kernel, bytes = bytes](const PixelRows& out, int n, int shift) {
                const int left = shift % 8, width = static_cast<int>((n + left) / scale) + 1;
                const PlaneView from{source(0, width * bytes, shift).data, 0, {width, 200}};
                draw(from, {out.data, n * bytes}, scale, {left, 0, left + n, kernelRows});
            });
        }
    }
    for (const FencedMemory& memory : sources)
        random.fill(memory.begin(), 1 << 16);
    std::vector<std::uint8_t> before(2 * 64 + 2 * longest * kernelRows), plain;
    random.fill(before.data(), before.size());
    for (std::size_t i = 0; i < loops.size(); ++i) {
        for (int n = 0; n <= longest; ++n) {
            for (int shift = static_cast<int>(i) % 4; shift < 64; shift += random.between(1, 7)) {
                for (const auto set : {InstructionSet::Plain, InstructionSet::Avx2, InstructionSet::Avx512}) {
                    limitInstructionSet(set);
                    auto written = before;
                    runOnMovedStack(shift, [&] { loops[i]({written.data() + shift, 0}, n, shift); });
                    plain = set == InstructionSet::Plain ? written : plain;
                    ASSERT_EQ(plain, written) << "loop " << i << ", length " << n << ", shift " << shift;
                }
            }
        }
    }
}

} // namespace
} // namespace talx::test
