// Every inner loop of the pixel code on a full-HD view.
//
//   pixel_bench [--instructions=plain|avx2|avx512] [--benchmark_filter=...]
#include "bench/peers.h"
#include "render/pixels/color_maps.h"
#include "render/pixels/icon_blend.h"
#include "render/pixels/kernels.h"
#include "render/pixels/row_converters.h"
#include "render/pixels/versions.h"

#include <cstdio>
#include <cstring>
#include <random>

namespace talx::bench {
namespace {

using enum PixelFormat;

constexpr Extent view{1920, 1080};
constexpr std::size_t pixels = std::size_t{view.width} * view.height;
constexpr int w = view.width;

template <PixelFormat Format>
PixelRows rowsOf(std::uint8_t* buffer) {
    return {buffer, std::ptrdiff_t{view.width} * bytesPerPixel(Format)};
}

template <PixelFormat Format>
std::string into() {
    return Format == Pal8    ? " to 8"
           : Format == Rgb15 ? " to 15"
           : Format == Rgb16 ? " to 16"
           : Format == Rgb24 ? " to 24"
                             : " to 32";
}

// What a camera delivers: a smooth picture with some noise, which the caches of the large tables feel.
std::vector<std::uint16_t> heights() {
    std::mt19937 random(2);
    std::vector<std::uint16_t> v(pixels);
    for (std::size_t i = 0; i < pixels; ++i)
        v[i] = static_cast<std::uint16_t>(20 * (i % w) + 20 * (i / w) + random() % 512);
    return v;
}

// Everything that the works read, alive while they are measured.
struct Pictures {
    std::vector<std::uint8_t> grey = noise(pixels), red = noise(pixels + 1), green = noise(pixels + 2),
                              blue = noise(pixels + 3);
    std::vector<std::uint16_t> values = heights();
    std::vector<std::uint8_t> mask = noise(pixels);
    GreyColorMap8 ramp8, colors8;
    ColorMap16 ramp16, colors16;

    Pictures() {
        for (std::uint8_t& m : mask)
            m &= 1; // no branch predictor learns it
        std::mt19937 random(3);
        colors8.beginReplace();
        for (int i = 0; i < 256; ++i)
            colors8.append(fromRgbWord(static_cast<std::uint32_t>(random())));
        colors8.endReplace();
        colors8.updatePalette([](std::uint32_t c) { return static_cast<std::uint8_t>(c * 31 >> 8); });
        colors16.beginReplace();
        for (int i = 0; i < 65536; ++i)
            colors16.append(fromRgbWord(static_cast<std::uint32_t>(random())));
        colors16.endReplace();
        ramp16.setSize(65536);
        colors16.setSize(65536);
    }
};

template <PixelFormat Format>
void addGrey8(Pictures& p, GreyColorMap8& map, const std::string& name) {
    const auto* table = map.table<Format>();
    Ways ways = peersOfGrey8(Format, p.grey.data(), view, table);
    ways.insert(ways.begin(), {"", [&p, table](std::uint8_t* out) {
                                   convertGrey8(rowsOf<Format>(out), {p.grey.data(), w}, view, table);
                               }});
    addWork(name + into<Format>(), pixels * bytesPerPixel(Format), std::move(ways));
}

template <PixelFormat Format>
void addGrey16(Pictures& p, ColorMap16& map, const std::string& name) {
    const auto* table = map.table<Format>();
    Ways ways = peersOfGrey16(Format, p.values.data(), view, table);
    const ConstPixelRows in{reinterpret_cast<const std::uint8_t*>(p.values.data()), 2 * w};
    ways.insert(ways.begin(), {"", [=](std::uint8_t* out) {
                                   convertGrey16(rowsOf<Format>(out), in, view, table, 65535);
                               }});
    addWork(name + into<Format>(), pixels * bytesPerPixel(Format), std::move(ways));
    const ConstPixelRows mask{p.mask.data(), w};
    addWork(name + into<Format>() + " with mask", pixels * bytesPerPixel(Format),
            {{"", [=](std::uint8_t* out) {
                  convertMaskedRange16(rowsOf<Format>(out), in, mask, view, table, 65535, table[77]);
              }}});
}

template <PixelFormat Format>
void addColor(Pictures& p) {
    Ways ways = peersOfColor(Format, p.red.data(), p.green.data(), p.blue.data(), view);
    ways.insert(ways.begin(), {"", [&p](std::uint8_t* out) {
                                   convertColor(Format, rowsOf<Format>(out), {p.red.data(), w},
                                                {p.green.data(), w}, {p.blue.data(), w}, view);
                               }});
    addWork("three planes" + into<Format>(), pixels * bytesPerPixel(Format), std::move(ways));
}

// The whole of a source that is just as large as the view needs.
template <auto Kernel, int PixelBytes>
void addKernel(const std::string& name, double scale, bool hasPeers) {
    const auto size = [=](std::int32_t n) {
        return static_cast<std::int32_t>(n / scale + 0.5);
    };
    const Extent extent{size(view.width), size(view.height)};
    static std::vector<std::vector<std::uint8_t>> sources;
    const std::uint8_t* source =
        sources.emplace_back(noise(std::size_t(extent.width) * extent.height * PixelBytes)).data();
    Ways ways = hasPeers ? peersOfNearest(PixelBytes, source, extent, view) : Ways{};
    ways.insert(ways.begin(), {"", [=](std::uint8_t* out) {
                                   Kernel({source, extent.width * std::ptrdiff_t{PixelBytes}, extent},
                                          {out, w * std::ptrdiff_t{PixelBytes}}, scale,
                                          {0, 0, view.width, view.height});
                               }});
    char label[80];
    std::snprintf(label, sizeof label, "%s, %d bits, x %g", name.c_str(), 8 * PixelBytes, scale);
    addWork(label, pixels * PixelBytes, std::move(ways));
}

// An icon over the whole view; transparencyOf gives the per cent of each index.
template <PixelFormat Format>
void addIcon(Pictures& p, const std::string& name, int (*transparencyOf)(int index)) {
    IconTables tables;
    static std::vector<std::vector<std::uint32_t>> kept;
    std::uint8_t weights[256];
    std::vector<std::uint32_t> colors;
    for (int i = 0; i < 256; ++i) {
        const ColorEntry color = fromRgbWord(static_cast<std::uint32_t>(i * 0x01C371));
        weights[i] = tables.weight[i] = iconWeight(static_cast<std::uint8_t>(transparencyOf(i)));
        tables.color[i] = weights[i] == invisibleWeight ? 0 : toPixel(Format, color);
        colors.push_back(toRgb32(color));
    }
    Ways ways;
    if (Format == Rgb32)
        ways = peersOfBlend(p.grey.data(), view, colors.data(), weights);
    ways.insert(ways.begin(), {"", [&p, tables](std::uint8_t* out) {
                                   blendIcon(Format, rowsOf<Format>(out), {p.grey.data(), w}, view, tables);
                               }});
    addWork("icon, " + name + into<Format>(), pixels * bytesPerPixel(Format), std::move(ways));
}

template <PixelFormat Format>
void addIcons(Pictures& p) {
    addIcon<Format>(p, "opaque", [](int) { return 0; });
    addIcon<Format>(p, "opaque with holes", [](int i) { return i % 4 == 0 ? 100 : 0; });
    addIcon<Format>(p, "30 %", [](int) { return 30; });
    addIcon<Format>(p, "every weight", [](int i) { return i % 101; });
}

// Small drawings cost what is made ready for each of them: a thousand, one over the other.
void addSmall(Pictures& p) {
    const auto* table = p.colors8.table<Rgb32>();
    addWork("1000 times 16 x 16, 8-bit to 32", 16 * 16 * 4,
            {{"", [&p, table](std::uint8_t* out) {
                  for (int i = 0; i < 1000; ++i)
                      convertGrey8({out, 64}, {p.grey.data(), 16}, {16, 16}, table);
              }}});
    IconTables tables;
    for (int i = 0; i < 256; ++i) {
        tables.weight[i] = iconWeight(30);
        tables.color[i] = static_cast<std::uint32_t>(i) * 0x01C371 & 0xFFFFFF;
    }
    addWork("1000 times an icon of 32 x 32, 30 %, to 32", 32 * 32 * 4,
            {{"", [&p, tables](std::uint8_t* out) {
                  for (int i = 0; i < 1000; ++i)
                      blendIcon(Rgb32, {out, 128}, {p.grey.data(), 32}, {32, 32}, tables);
              }}});
    const PlaneView icon{p.grey.data(), 32, {32, 32}};
    addWork("1000 times nearest, 8 bits, 32 x 32 x 2.5", 80 * 80,
            {{"", [icon](std::uint8_t* out) {
                  for (int i = 0; i < 1000; ++i)
                      resampleNearest8(icon, {out, 80}, 2.5, {0, 0, 80, 80});
              }}});
}

// Small works, as many of them as take a while: their times are to be divided by the count.
void addTables() {
    addWork("1000 8-bit tables of 32-bit pixels", 1024, {{"", [](std::uint8_t* out) {
                                                              for (int i = 0; i < 1000; ++i) {
                                                                  GreyColorMap8 map;
                                                                  std::memcpy(out, map.table<Rgb32>(), 1024);
                                                              }
                                                          }}});
    addWork("1000 changes of one colour", 1024,
            {{"", [](std::uint8_t* out) {
                  GreyColorMap8 map;
                  map.table<Rgb32>();
                  for (int i = 0; i < 1000; ++i)
                      map.setEntry(static_cast<std::uint8_t>(i), fromRgbWord(i * 77),
                                   [](std::uint32_t) -> std::uint8_t { return 0; });
                  std::memcpy(out, map.table<Rgb32>(), 1024);
              }}});
    addWork("ten 16-bit tables of 32-bit pixels", 262144, {{"", [](std::uint8_t* out) {
                                                                for (int i = 0; i < 10; ++i) {
                                                                    ColorMap16 map;
                                                                    map.setSize(65536);
                                                                    std::memcpy(out, map.table<Rgb32>(),
                                                                                262144);
                                                                }
                                                            }}});
}

void addAll(Pictures& p) {
    addGrey8<Pal8>(p, p.colors8, "8-bit, colours,");
    addGrey8<Rgb16>(p, p.colors8, "8-bit, colours,");
    addGrey8<Rgb24>(p, p.colors8, "8-bit, colours,");
    addGrey8<Rgb32>(p, p.colors8, "8-bit, colours,");
    addGrey8<Rgb16>(p, p.ramp8, "8-bit, grey,");
    addGrey8<Rgb24>(p, p.ramp8, "8-bit, grey,");
    addGrey8<Rgb32>(p, p.ramp8, "8-bit, grey,");
    addGrey16<Rgb16>(p, p.colors16, "16-bit, 65536 colours,");
    addGrey16<Rgb24>(p, p.colors16, "16-bit, 65536 colours,");
    addGrey16<Rgb32>(p, p.colors16, "16-bit, 65536 colours,");
    addGrey16<Rgb16>(p, p.ramp16, "16-bit, grey,");
    addGrey16<Rgb24>(p, p.ramp16, "16-bit, grey,");
    addGrey16<Rgb32>(p, p.ramp16, "16-bit, grey,");
    addColor<Rgb15>(p);
    addColor<Rgb16>(p);
    addColor<Rgb24>(p);
    addColor<Rgb32>(p);
    for (const double scale : {2.5, 3.0, 0.37}) {
        addKernel<resampleNearest8, 1>("nearest", scale, true);
        addKernel<resampleNearest16, 2>("nearest", scale, true);
    }
    for (const double scale : {2.5, 3.0, 0.4}) {
        addKernel<resampleCentre8, 1>("centre", scale, false);
        addKernel<resampleCentre16, 2>("centre", scale, false);
    }
    addIcons<Rgb15>(p);
    addIcons<Rgb16>(p);
    addIcons<Rgb24>(p);
    addIcons<Rgb32>(p);
    addSmall(p);
    addTables();
}

} // namespace
} // namespace talx::bench

int main(int argc, char** argv) {
    using namespace talx;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--instructions=plain")
            limitInstructionSet(InstructionSet::Plain);
        else if (argument == "--instructions=avx2")
            limitInstructionSet(InstructionSet::Avx2);
    }
    bench::Pictures pictures;
    bench::addAll(pictures);
    return bench::printTable(argc, argv, 4 * bench::pixels);
}
