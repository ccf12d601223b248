// Which overlays are shown above the image.
#pragma once

#include "viewer/view/geometry.h"

#include "viewer/view/placement.h"

#include <optional>
#include <string>

namespace talview {

struct OverlayState {
    bool grid = true; // lines between pixels and values in them, where they are large enough
    bool colorBar = false;
    bool histogram = false;
    bool profile = false;     // the plot, and the line that its values are taken from
    std::optional<Line> line; // in image pixels, whole numbers being their middles
    bool help = false;
    std::wstring message; // in a corner; empty: none

    [[nodiscard]] std::optional<Line> lineShown() const { return profile ? line : std::nullopt; }
    friend bool operator==(const OverlayState&, const OverlayState&) = default;
};

constexpr long lineEndSize = 3; // of the squares at the line's ends: pixels of the view beside their middle
// What the line covers of the view.
[[nodiscard]] Box boxOfLine(const Placement& placement, const Line& line);

constexpr double gridScale = 16;   // above which there is a grid
constexpr double valuesScale = 48; // and values in the pixels

} // namespace talview
