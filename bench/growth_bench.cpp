// How the time for a pixel grows with the picture: squares from 64 x 64 to 8192 x 8192, in all formats. Where
// the pictures leave the caches, copying memory shows what that costs.
#include "bench/measure.h"
#include "render/pixels/color_maps.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/kernels.h"
#include "render/pixels/row_converters.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstring>

namespace talx::bench {
namespace {

using enum PixelFormat;

constexpr int sides[] = {64, 256, 1024, 2048, 4096, 8192};
constexpr std::size_t most = std::size_t{8192} * 8192;

struct Memory {
    std::vector<std::uint8_t> source = noise(2 * most), planes = noise(4 * most), target = noise(4 * most);
};

// A work on the upper left square of this side.
using Work = std::function<void(int side)>;

double secondsOf(const Work& work, int side) {
    const int repeats = std::max(1, 1 << 21 >> (2 * std::bit_width(static_cast<unsigned>(side)) - 2));
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeats; ++i)
        work(side);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / repeats;
}

// The fastest of some turns, since a slow one tells of the machine only; in nanoseconds for a pixel.
void addRow(const char* name, const Work& work) {
    std::printf("| %s |", name);
    for (const int side : sides) {
        double best = 1e9;
        for (int turn = 0; turn < 7; ++turn)
            best = std::min(best, secondsOf(work, side));
        std::printf(" %.3f |", best * 1e9 / side / side);
    }
    std::printf("\n");
    std::fflush(stdout);
}

template <PixelFormat Format>
void addFormat(Memory& m, GreyColorMap8& map8, ColorMap16& map16, const char* name) {
    const auto label = [name](const char* work) {
        return std::string(work) + " to " + name;
    };
    const auto rows = [&m](int side) {
        return PixelRows{m.target.data(), std::ptrdiff_t{side} * bytesPerPixel(Format)};
    };
    const auto plane = [&m](int side, int number) {
        return ConstPixelRows{m.planes.data() + number * most, side};
    };
    addRow(label("8-bit grey").c_str(), [&](int side) {
        convertGrey8(rows(side), {m.source.data(), side}, {side, side}, map8.table<Format>());
    });
    if constexpr (Format != Pal8) {
        addRow(label("16-bit range with mask").c_str(), [&](int side) {
            const auto* table = map16.table<Format>();
            convertMaskedRange16(rows(side), {m.source.data(), 2 * std::ptrdiff_t{side}}, plane(side, 0),
                                 {side, side}, table, 1023, table[5]);
        });
        addRow(label("three planes").c_str(), [&](int side) {
            convertColor(Format, rows(side), plane(side, 0), plane(side, 1), plane(side, 2), {side, side});
        });
        IconTables tables;
        for (std::uint32_t i = 0; i < 256; ++i) {
            tables.weight[i] = iconWeight(30);
            tables.color[i] = toPixel(Format, greyEntry(i));
        }
        addRow(label("icon, 30 %").c_str(), [&](int side) {
            blendIcon(Format, rows(side), {m.source.data(), side}, {side, side}, tables);
        });
    }
}

void printGrowth() {
    Memory m;
    GreyColorMap8 map8;
    ColorMap16 map16;
    map16.setSize(1024);
    std::printf("| nanoseconds a pixel |");
    for (const int side : sides)
        std::printf(" %d² |", side);
    std::printf("\n|---|---|---|---|---|---|---|\n");
    addRow("copying 32 bits",
           [&](int side) { std::memcpy(m.target.data(), m.planes.data(), std::size_t{4} * side * side); });
    addFormat<Pal8>(m, map8, map16, "8");
    addFormat<Rgb15>(m, map8, map16, "15");
    addFormat<Rgb16>(m, map8, map16, "16");
    addFormat<Rgb24>(m, map8, map16, "24");
    addFormat<Rgb32>(m, map8, map16, "32");
    addRow("nearest x 2.5, 8 bits", [&](int side) {
        const auto part = static_cast<std::int32_t>(side / 2.5);
        resampleNearest8({m.source.data(), part, {part, part}}, {m.target.data(), side}, 2.5,
                         {0, 0, side, side});
    });
    addRow("centre x 2.5, 16 bits", [&](int side) {
        const auto part = static_cast<std::int32_t>(side / 2.5);
        resampleCentre16({m.source.data(), 2 * std::ptrdiff_t{part}, {part, part}},
                         {m.target.data(), 2 * std::ptrdiff_t{side}}, 2.5, {0, 0, side, side});
    });
}

} // namespace
} // namespace talx::bench

int main() {
    talx::bench::printGrowth();
}
