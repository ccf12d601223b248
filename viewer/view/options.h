// What the command line asks for. Nothing of Windows is needed to read it.
#pragma once

#include "viewer/view/color_maps.h"
#include "viewer/view/geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace talview {

struct Options {
    std::wstring image; // or a folder; empty: none yet
    bool help = false;

    long width = 800; // of the picture in the window, in pixels
    long height = 600;
    std::optional<double> scale; // none: the whole image fits the window
    std::optional<Point> at;     // view position of the image's top left corner; none: centred
    bool centre = false;         // sampling method

    const ColorMap* map = colorMaps().data();
    std::optional<Limits> limits; // none: all values of the image's depth
    bool autoLimits = false;      // the image's own smallest and largest value instead

    int depth = 16; // significant bits of a 16-bit grey image
    bool range = false;
    std::wstring mask;
    std::uint32_t maskColor = 0x400040; // 0x00RRGGBB

    std::vector<Point> markers; // in image pixels

    bool directDraw = false;
    int format = 0; // of the render target, one of TalRenderTargetFormatConstants; 0: the engine's own
    std::wstring save;
    std::optional<double> hold; // seconds

    [[nodiscard]] bool interactive() const { return save.empty() && !hold; }
};

// arguments: without the program's name. Throws UsageError.
[[nodiscard]] Options parseOptions(const std::vector<std::wstring>& arguments);

extern const char helpText[];

} // namespace talview
