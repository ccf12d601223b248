// Which overlays lie over the picture.
#pragma once

#include "viewer/view/profile.h"

#include <optional>

namespace talview {

struct OverlayOptions {
    bool grid = true; // far in: lines between the pixels, and farther their values
    bool colorBar = false;
    bool histogram = false;
    bool profile = false; // the line below and a plot of the values along it
    bool help = false;
    std::optional<ProfileLine> line;
};

} // namespace talview
