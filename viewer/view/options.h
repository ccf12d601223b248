// What the command line asks for. Nothing of Windows is needed to read it.
#pragma once

#include "viewer/view/color_maps.h"
#include "viewer/view/geometry.h"
#include "viewer/view/picture.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace talview {

struct AskedLimits {
    enum Kind { byKind, data, full, fixed }; // byKind: full for 8-bit grey, data for everything else
    Kind kind = byKind;
    Limits values; // if fixed; in the unit of the picture's scale
};

struct Options {
    std::wstring image;  // or a folder; empty: none yet
    std::wstring folder; // where to look for one then; not on the command line
    long frame = 1;      // of a file of several, counted from 1
    bool help = false;
    bool version = false;

    long width = 800; // of the picture in the window, in pixels
    long height = 600;
    std::optional<double> scale; // none: the whole image fits the window
    std::optional<Point> at;     // view position of the image's top left corner; none: centred
    bool centre = false;         // sampling method
    bool fullScreen = false;

    const ColorMap* map = colorMaps().data();
    AskedLimits limits;
    bool flags = false; // pixels at and beyond the limits have colours of their own

    int depth = 16; // significant bits of a 16-bit grey image
    bool range = false;
    std::wstring mask;
    std::uint32_t maskColor = 0x400040; // 0x00RRGGBB
    bool hides = true;                  // what the mask hides has its colour; false: it is shown as it is
    std::optional<ValueScale> heights;  // in place of the file's own

    std::vector<Point> markers; // in image pixels
    std::wstring markersFile;
    bool grid = true;
    bool colorBar = false;
    bool histogram = false;
    std::optional<Line> profile; // in image pixels

    bool directDraw = false;
    int format = 0; // of the render target, one of TalRenderTargetFormatConstants; 0: the engine's own
    std::wstring save;
    bool savesOverlays = true;  // and markers
    std::optional<double> hold; // seconds
    bool remembers = true;      // reads and writes what is kept between two runs

    std::vector<std::wstring> given; // names of all options on the command line, without their values

    [[nodiscard]] bool interactive() const { return save.empty() && !hold; }
    [[nodiscard]] bool has(std::wstring_view name) const {
        return std::find(given.begin(), given.end(), name) != given.end();
    }
};

// arguments: without the program's name. Throws UsageError for what is unknown, wrong, or would surely do
// nothing.
[[nodiscard]] Options parseOptions(const std::vector<std::wstring>& arguments);

} // namespace talview
