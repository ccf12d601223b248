// What the status line says of a scene.
#pragma once

#include "viewer/scene/scene.h"

#include <optional>
#include <string>
#include <vector>

namespace talview {

// Position and raw value in the view; empty if there is no picture.
[[nodiscard]] std::wstring valueAt(const View& view, POINT at);

// What the state of the view does not tell.
struct StatusFacts {
    std::optional<POINT> pointer;       // in pixels of the view
    std::optional<double> milliseconds; // that the last drawing took
    unsigned frame = 0;                 // of the file, from 0
    unsigned frames = 1;                // that it has
    bool isIncomplete = false;          // the file has not all of the picture
};

// Position and raw value under the pointer; the picture; zoom and scaling method; colour map and limits;
// engine and screen; what the last drawing took. None without a picture.
[[nodiscard]] std::vector<std::wstring> statusTexts(const Scene& scene, const StatusFacts& facts);

} // namespace talview
