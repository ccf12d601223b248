// See system_palette.h.

#include "render/system_palette.h"

#include <algorithm>

namespace talx {

std::optional<PaletteEntries> systemPaletteEntries(HDC dc) {
    PaletteEntries entries{};
    const UINT read = GetSystemPaletteEntries(dc, 0, static_cast<UINT>(entries.size()), entries.data());
    return read > 0 ? std::optional(entries) : std::nullopt;
}

UniquePalette createPalette(const PaletteEntries& entries) {
    // LOGPALETTE ends with its first entry; the others follow in the same layout.
    struct {
        WORD version;
        WORD count;
        PALETTEENTRY entries[256];
    } logical{0x300, static_cast<WORD>(entries.size()), {}};
    std::copy(entries.begin(), entries.end(), logical.entries);
    return UniquePalette(CreatePalette(reinterpret_cast<const LOGPALETTE*>(&logical)));
}

} // namespace talx
