// What a scene shows, as a bitmap in memory.
#pragma once

#include "viewer/scene/scene.h"

namespace talview {

// The whole view in 24-bit colour, rows from the bottom as the clipboard wants them, drawn anew if something
// has changed. Either engine. Throws talxrend::Failure.
[[nodiscard]] inline talxrend::GdiOwner<HBITMAP> viewBitmap(Scene& scene) {
    scene.compose();
    return talxrend::viewBitmap(scene.engine(), talxrend::Rows::fromBottom);
}

} // namespace talview
