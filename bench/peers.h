// What a user of public libraries would write for the same works: empty where a library was not found.
#pragma once

#include "bench/measure.h"
#include "render/pixels/pixel_format.h"

namespace talx::bench {

using Ways = std::vector<Way>;

// Sources and tables live as long as the ways are used.

[[nodiscard]] Ways peersOfGrey8(PixelFormat, const std::uint8_t* source, Extent, const void* table);
[[nodiscard]] Ways peersOfGrey16(PixelFormat, const std::uint16_t* source, Extent, const void* table);
[[nodiscard]] Ways peersOfColor(PixelFormat, const std::uint8_t* red, const std::uint8_t* green,
                                const std::uint8_t* blue, Extent);
// The whole source, to the whole buffer.
[[nodiscard]] Ways peersOfNearest(int bytesPerPixel, const std::uint8_t* source, Extent, Extent scaled);
// 32-bit pixels. colors are 0x00RRGGBB, weights the shares of the buffer in 128ths.
[[nodiscard]] Ways peersOfBlend(const std::uint8_t* icon, Extent, const std::uint32_t* colors,
                                const std::uint8_t* weights);

} // namespace talx::bench
