// The palette of a 256-colour screen.
#pragma once

#include "render/gdi_handles.h"

#include <array>
#include <optional>

namespace talx {

using PaletteEntries = std::array<PALETTEENTRY, 256>;

// The system palette as the device context sees it; nothing where it cannot be read.
[[nodiscard]] std::optional<PaletteEntries> systemPaletteEntries(HDC dc);

// A logical palette of these entries; null when it cannot be made.
[[nodiscard]] UniquePalette createPalette(const PaletteEntries& entries);

// The index of the palette's colour nearest to 0x00BBGGRR; 255 without a palette.
[[nodiscard]] inline BYTE nearestPaletteIndex(HPALETTE palette, COLORREF color) {
    return palette ? static_cast<BYTE>(GetNearestPaletteIndex(palette, color)) : 255;
}

} // namespace talx
