// Blending of 256-colour icons into a layer: the weights, the per-call tables and one loop for each depth.
#pragma once

#include "render/pixels/pixel_format.h"
#include "render/pixels/row_converters.h"

#include <array>

namespace talx {

// The share of the existing layer pixel, in 128ths, for a transparency in per cent: floor(t * 1.28 + 0.5).
// Above 100 counts as 100.
[[nodiscard]] std::uint8_t iconWeight(std::uint8_t transparency);

constexpr std::uint8_t invisibleWeight = 128;

// What each icon index draws. Colours are in the layer's format; Rgb24 and Rgb32 as 0x00RRGGBB.
struct IconTables {
    std::array<std::uint32_t, 256> color{};
    std::array<std::uint8_t, 256> weight{};
};

// What each icon index draws on a palettised layer: nothing is blended.
struct IconIndexTables {
    std::array<std::uint8_t, 256> index{};
    std::array<bool, 256> transparent{}; // leaves the layer's pixel as it was
};

// Per pixel with a = weight: 128 leaves the layer, 0 writes the colour, 64 is the half blend of the whole
// word, anything else (layer * a + colour * (128 - a)) >> 7 per channel. Formats other than Rgb15 to Rgb32
// write nothing.
void blendIcon(LayerFormat format, const PixelRows& layer, const ConstPixelRows& icon, Extent extent,
               const IconTables& tables);

// The same for Pal8 layers.
void drawIconIndices(const PixelRows& layer, const ConstPixelRows& icon, Extent extent,
                     const IconIndexTables& tables);

} // namespace talx
