// Times the pixel routines on a full-HD buffer, each beside a memcpy of as many bytes as it writes: the
// routines only read, look up and write, so the copy is the limit that memory sets.
#include "render/pixels/color_maps.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/kernels.h"
#include "render/pixels/row_converters.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <random>

namespace {

using namespace talx;

constexpr std::int32_t width = 1920;
constexpr std::int32_t height = 1080;
constexpr Extent extent{width, height};
constexpr std::size_t pixels = std::size_t{width} * height;

std::vector<std::uint8_t> noise(std::size_t bytes) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> v(bytes);
    for (std::uint8_t& b : v)
        b = static_cast<std::uint8_t>(random());
    return v;
}

// What a camera delivers: a smooth picture with some noise, which the caches of the large tables feel.
std::vector<std::uint8_t> heights16() {
    std::mt19937 random(2);
    std::vector<std::uint8_t> v(2 * pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::size_t x = i % width, y = i / width;
        const auto h = static_cast<std::uint16_t>(20 * x + 20 * y + random() % 512);
        std::memcpy(&v[2 * i], &h, sizeof h);
    }
    return v;
}

// Runs draw(buffer) on a buffer of pixelSize bytes a pixel; routine and copy take turns.
template <class Draw>
void run(benchmark::State& state, std::size_t pixelSize, Draw draw) {
    using Clock = std::chrono::steady_clock;
    std::vector<std::uint8_t> buffer = noise(pixels * pixelSize);
    std::vector<std::uint8_t> other = buffer;
    const PixelRows rows{buffer.data(), static_cast<std::ptrdiff_t>(width * pixelSize)};
    std::chrono::duration<double> drawing{}, copying{};
    for ([[maybe_unused]] auto _ : state) {
        const auto start = Clock::now();
        draw(rows);
        benchmark::ClobberMemory();
        const auto drawn = Clock::now();
        std::memcpy(other.data(), buffer.data(), buffer.size());
        benchmark::ClobberMemory();
        const auto copied = Clock::now();
        drawing += drawn - start;
        copying += copied - drawn;
        state.SetIterationTime(std::chrono::duration<double>(drawn - start).count());
    }
    state.counters["times_memcpy"] = drawing / copying;
    state.counters["Mpixel/s"] = pixels * static_cast<double>(state.iterations()) / drawing.count() / 1e6;
}

template <PixelFormat Format>
void grey8(benchmark::State& state) {
    const auto source = noise(pixels);
    GreyColorMap8 map;
    run(state, bytesPerPixel(Format), [&](const PixelRows& out) {
        convertGrey8(out, {source.data(), width}, extent, map.table<Format>());
    });
}

template <PixelFormat Format>
void grey16(benchmark::State& state) {
    const auto source = heights16();
    ColorMap16 map;
    map.setSize(65536);
    run(state, bytesPerPixel(Format), [&](const PixelRows& out) {
        convertGrey16(out, {source.data(), 2 * width}, extent, map.table<Format>(), map.maxValue());
    });
}

void maskedRange(benchmark::State& state) {
    const auto source = heights16();
    auto mask = noise(pixels);
    for (std::uint8_t& m : mask)
        m &= 1; // no branch predictor learns it
    ColorMap16 map;
    map.setSize(65536);
    run(state, 4, [&](const PixelRows& out) {
        convertMaskedRange16(out, {source.data(), 2 * width}, {mask.data(), width}, extent,
                             map.table<PixelFormat::Rgb32>(), map.maxValue(), std::uint32_t{0xFF});
    });
}

template <PixelFormat Format>
void color(benchmark::State& state) {
    const auto planes = noise(3 * pixels);
    const auto plane = [&](std::size_t n) {
        return ConstPixelRows{&planes[n * pixels], width};
    };
    run(state, bytesPerPixel(Format),
        [&](const PixelRows& out) { convertColor(Format, out, plane(0), plane(1), plane(2), extent); });
}

// The source is just large enough for the target; the target starts away from the corner.
template <auto Kernel, std::size_t PixelSize>
void kernel(benchmark::State& state, double scale) {
    constexpr Rect target{10, 10, 10 + width, 10 + height};
    const auto size = [=](std::int32_t n) {
        return static_cast<std::int32_t>((n + 20) / scale) + 1;
    };
    const std::int32_t w = size(width), h = size(height);
    const auto source = noise(std::size_t(w) * h * PixelSize);
    const PlaneView view{source.data(), static_cast<std::ptrdiff_t>(w * PixelSize), w, h};
    run(state, PixelSize, [&](const PixelRows& out) { Kernel(view, out, scale, target); });
}

// Transparencies in percent of the icon's 256 indices: one for all, or each its own.
template <PixelFormat Format>
void icon(benchmark::State& state, int transparency) {
    const auto source = noise(pixels);
    IconTables tables;
    for (std::size_t i = 0; i < 256; ++i) {
        tables.color[i] = static_cast<std::uint32_t>(i * 0x010203) & 0xFFFFFF;
        tables.weight[i] = iconWeight(static_cast<std::uint8_t>(transparency < 0 ? i % 101 : transparency));
    }
    run(state, bytesPerPixel(Format), [&](const PixelRows& out) {
        blendIcon(Format, out, {source.data(), width}, extent, tables);
    });
}

#define TALX_BENCHMARK(...) BENCHMARK(__VA_ARGS__)->UseManualTime()->Unit(benchmark::kMillisecond)
#define TALX_BENCHMARK_WITH(f, name, arg)                                                                    \
    BENCHMARK_CAPTURE(f, name, arg)->UseManualTime()->Unit(benchmark::kMillisecond)

TALX_BENCHMARK(grey8<PixelFormat::Pal8>);
TALX_BENCHMARK(grey8<PixelFormat::Rgb16>);
TALX_BENCHMARK(grey8<PixelFormat::Rgb24>);
TALX_BENCHMARK(grey8<PixelFormat::Rgb32>);
TALX_BENCHMARK(grey16<PixelFormat::Rgb24>);
TALX_BENCHMARK(grey16<PixelFormat::Rgb32>);
TALX_BENCHMARK(maskedRange);
TALX_BENCHMARK(color<PixelFormat::Rgb16>);
TALX_BENCHMARK(color<PixelFormat::Rgb24>);
TALX_BENCHMARK(color<PixelFormat::Rgb32>);
constexpr auto nearest8 = kernel<resampleNearest8, 1>;
constexpr auto nearest16 = kernel<resampleNearest16, 2>;
constexpr auto centre8 = kernel<resampleCentre8, 1>;
constexpr auto centre16 = kernel<resampleCentre16, 2>;
TALX_BENCHMARK_WITH(nearest8, times_3, 3.0);
TALX_BENCHMARK_WITH(nearest8, times_0_37, 0.37);
TALX_BENCHMARK_WITH(nearest16, times_0_37, 0.37);
TALX_BENCHMARK_WITH(centre8, times_2_5, 2.5);
TALX_BENCHMARK_WITH(centre8, times_0_4, 0.4);
TALX_BENCHMARK_WITH(centre16, times_0_4, 0.4);
constexpr auto icon32 = icon<PixelFormat::Rgb32>;
TALX_BENCHMARK_WITH(icon32, opaque, 0);
TALX_BENCHMARK_WITH(icon32, blended, 30);
TALX_BENCHMARK_WITH(icon32, of_every_weight, -1);

} // namespace
