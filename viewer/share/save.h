// Saving what a scene shows.
#pragma once

#include "viewer/scene/scene.h"

namespace talview {

// Writes the whole view as PNG, JPEG, BMP or TIFF by the name's ending: with the GDI engine through a render
// target in the given pixel format, with the DirectDraw engine straight from its composition. 8-bit targets
// keep their palette as PNG; 15- and 16-bit ones 24-bit, each channel widened by repeating its upper bits
// below; 32-bit ones lose their unused byte. Nothing else changes a pixel before the file is written.
void save(Scene& scene, TalRenderTargetFormatConstants format, const std::wstring& path);

} // namespace talview
