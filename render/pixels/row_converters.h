// The inner loops of drawing: source pixels looked up in a ready-made table, or packed, into buffer pixels.
//
// Every converter writes width x height pixels; a height or width below 1 writes nothing. Tables are those of
// render/pixels/color_maps.h: 256 entries for 8-bit sources, maxValue + 1 entries for 16-bit ones. 16-bit
// sources and destinations need no alignment.
#pragma once

#include "render/pixels/geometry.h"
#include "render/pixels/pixel_format.h"

namespace talx {

// 8-bit grey: destination = table[source]. Entry is uint8_t (Pal8), uint16_t (Rgb15, Rgb16), ColorEntry
// (Rgb24) or uint32_t (Rgb32).
template <class Entry>
void convertGrey8(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                  const Entry* table);

// 16-bit grey or range: destination = table[source & maxValue]. Entry is uint16_t, ColorEntry or uint32_t.
template <class Entry>
void convertGrey16(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                   const Entry* table, std::uint32_t maxValue);

// 16-bit range with its mask plane: where the mask byte is 0 the pixel is maskPixel.
template <class Entry>
void convertMaskedRange16(const PixelRows& destination, const ConstPixelRows& source,
                          const ConstPixelRows& mask, Extent extent, const Entry* table,
                          std::uint32_t maxValue, Entry maskPixel);

// Three 8-bit planes packed into the buffer's format; Pal8 and Unspecified write nothing.
void convertColor(PixelFormat format, const PixelRows& destination, const ConstPixelRows& red,
                  const ConstPixelRows& green, const ConstPixelRows& blue, Extent extent);

// The visible-pixel-mask colour in a buffer's format, from the owner's colour word as it stands. For 15 and
// 16 bits the arithmetic is 16-bit and signed: bytes of 128 and above disturb their neighbours, by
// definition.
[[nodiscard]] std::uint16_t maskPixel15(std::uint32_t word);
[[nodiscard]] std::uint16_t maskPixel16(std::uint32_t word);
[[nodiscard]] ColorEntry maskPixel24(std::uint32_t word); // the word's low three bytes in memory order

} // namespace talx
