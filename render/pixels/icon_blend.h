// Blending of 256-colour icons into a buffer: the weights, the per-call tables and one loop for each depth.
#pragma once

#include "render/pixels/geometry.h"
#include "render/pixels/pixel_format.h"

#include <array>

namespace talx {

// The share of the existing buffer pixel, in 128ths, for a transparency in per cent: floor(t * 1.28 + 0.5).
// Above 100 counts as 100.
[[nodiscard]] std::uint8_t iconWeight(std::uint8_t transparency);

constexpr std::uint8_t invisibleWeight = 128;

// What each icon index draws. Colours are in the buffer's format; Rgb24 and Rgb32 as 0x00RRGGBB.
struct IconTables {
    std::array<std::uint32_t, 256> color{};
    std::array<std::uint8_t, 256> weight{};

    bool operator==(const IconTables&) const = default;
};

// What each icon index draws on a palettised buffer: nothing is blended.
struct IconIndexTables {
    std::array<std::uint8_t, 256> index{};
    std::array<bool, 256> transparent{}; // leaves the buffer's pixel as it was
};

// Per pixel with a = weight: 128 leaves the buffer, 0 writes the colour, 64 is the half blend of the whole
// word, anything else (buffer * a + colour * (128 - a)) >> 7 per channel. Formats other than Rgb15 to Rgb32
// write nothing.
void blendIcon(PixelFormat format, const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
               const IconTables& tables);

// The same for Pal8 buffers.
void drawIconIndices(const PixelRows& buffer, const ConstPixelRows& icon, Extent extent,
                     const IconIndexTables& tables);

} // namespace talx
