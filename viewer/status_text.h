// What the status line says of a scene.
#pragma once

#include "viewer/scene/scene.h"

#include <optional>
#include <string>
#include <vector>

namespace talview {

// Position and raw value in the view; empty if there is no picture.
[[nodiscard]] std::wstring valueAt(const View& view, POINT at);

// Position and raw value under the pointer; the picture; zoom and scaling method; colour map and limits;
// engine and screen; what the last drawing took.
[[nodiscard]] std::vector<std::wstring> statusTexts(const Scene& scene, std::optional<POINT> pointer,
                                                    std::optional<double> milliseconds);

} // namespace talview
