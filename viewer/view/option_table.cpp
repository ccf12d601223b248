// The table, and what sets the options.
#include "viewer/view/option_table.h"

#include "viewer/view/failure.h"
#include "viewer/view/option_values.h"

namespace talview {
namespace {

void setSize(Options& options, Text value) {
    const auto [width, height] = parseNumbers<2>(value, 'x');
    options.width = whole(width, 1, 16384);
    options.height = whole(height, 1, 16384);
}

void setScale(Options& options, Text value) {
    options.scale = value == L"fit" ? std::nullopt : std::optional(parseNumber(value, 1e-3, 1e3));
}

void setMap(Options& options, Text value) {
    const auto& maps = colorMaps();
    const auto found = std::find_if(maps.begin(), maps.end(), [&](auto& map) { return value == map.name; });
    options.map = found == maps.end() ? throw BadValue() : &*found;
}

void setLimits(Options& options, Text value) {
    if (value == L"auto" || value == L"full") {
        options.limits.kind = value == L"auto" ? AskedLimits::data : AskedLimits::full;
        return;
    }
    const auto [low, high] = parseNumbers<2>(value);
    options.limits = {AskedLimits::fixed, low < high ? Limits{low, high} : throw BadValue()};
}

void setProfile(Options& options, Text value) {
    const auto [fromX, fromY, toX, toY] = parseNumbers<4>(value);
    options.profile = {{fromX, fromY}, {toX, toY}};
}

void setSave(Options& options, Text value) {
    std::wstring ending = value.substr(std::min(value.find_last_of(L'.'), value.size()));
    std::transform(ending.begin(), ending.end(), ending.begin(), [](wint_t c) { return std::towlower(c); });
    const wchar_t* const endings[] = {L".png", L".jpg", L".jpeg", L".bmp", L".tif", L".tiff"};
    const bool isKnown = std::find(std::begin(endings), std::end(endings), ending) != std::end(endings);
    options.save = isKnown ? value : throw BadValue();
}

void setFormat(Options& options, Text value) {
    options.format = choose<int>(
        value,
        {{L"native", 0}, {L"pal8", 8}, {L"rgb15", 15}, {L"rgb16", 16}, {L"rgb24", 24}, {L"rgb32", 32}});
}

constexpr char twoNumbers[] = "two numbers with a comma between them";
constexpr char fileName[] = "the name of a file";

} // namespace

const std::vector<Option>& optionTable() {
    static const std::vector<Option> table = {
        {L"--size", "WxH", "width and height from 1 to 16384, such as 800x600",
         "the picture in the window, in pixels (800x600)", setSize},
        {L"--scale", "S|fit", "a number from 0.001 to 1000, or fit",
         "window pixels for each image pixel (fit)", setScale},
        {L"--at", "X,Y", twoNumbers, "place of the image's top left corner in the window (in the middle)",
         [](Options& o, Text v) {
             o.at = parsePoint(v);
         }},
        {L"--method", "nearest|centre", "", "how a scaled image is sampled (nearest)",
         [](Options& o, Text v) {
             o.centre = choose<bool>(v, {{L"nearest", false}, {L"centre", true}});
         }},
        {L"--map", "NAME", "", "colours of grey and range images (grey): ", setMap},
        {L"--limits", "LOW,HIGH|auto|full", "two numbers, the smaller one first, or auto or full",
         "values that get the map's first and last colour; auto: the image's smallest and largest; full: all "
         "of its depth; numbers in the unit of --heights (full for 8-bit grey, otherwise auto)",
         setLimits},
        {L"--flags", "", "",
         "blue for values below the limits, and for 0; red for those above, and for the largest of the depth",
         [](Options& o, Text) {
             o.flags = true;
         }},
        {L"--depth", "8|10|12|14|16", "", "significant bits of a 16-bit grey image (16)",
         [](Options& o, Text v) {
             o.depth = choose<int>(v, {{L"8", 8}, {L"10", 10}, {L"12", 12}, {L"14", 14}, {L"16", 16}});
         }},
        {L"--kind", "auto|range", "", "range: a 16-bit grey file holds range values (auto)",
         [](Options& o, Text v) {
             o.range = choose<bool>(v, {{L"auto", false}, {L"range", true}});
         }},
        {L"--mask", "FILE", fileName,
         "mask of a range image: its black pixels hide the value; implies --kind range",
         [](Options& o, Text v) {
             o.mask = parseFile(v);
         }},
        {L"--mask-color", "RRGGBB", "six hexadecimal digits, such as 400040",
         "colour of hidden range pixels (400040)",
         [](Options& o, Text v) {
             o.maskColor = parseColor(v);
         }},
        {L"--no-mask", "", "", "shows what is hidden as if it were not",
         [](Options& o, Text) {
             o.hides = false;
         }},
        {L"--heights", "FACTOR,OFFSET[,UNIT]",
         "two numbers, the first one not 0, and perhaps a unit, such as 0.002,-5,mm",
         "what grey and range values mean: value * FACTOR + OFFSET",
         [](Options& o, Text v) {
             o.heights = parseHeights(v);
         }},
        {L"--frame", "N", "a whole number from 1 to 100000", "the picture in a file of several (1)",
         [](Options& o, Text v) {
             o.frame = whole(parseNumbers<1>(v)[0], 1, 100000);
         }},
        {L"--marker", "X,Y", twoNumbers, "marks the middle of image pixel X,Y; may be repeated",
         [](Options& o, Text v) {
             o.markers.push_back(parsePoint(v));
         }},
        {L"--markers", "FILE", fileName,
         "markers of a CSV file, such as Ctrl+M writes (IMAGE.markers.csv, where there is one)",
         [](Options& o, Text v) {
             o.markersFile = parseFile(v);
         }},
        {L"--no-grid", "", "", "no grid between pixels that are shown large",
         [](Options& o, Text) {
             o.grid = false;
         }},
        {L"--colour-bar", "", "", "shows the colour map with its values",
         [](Options& o, Text) {
             o.colorBar = true;
         }},
        {L"--histogram", "", "", "shows how often each value occurs",
         [](Options& o, Text) {
             o.histogram = true;
         }},
        {L"--profile", "X1,Y1,X2,Y2", "four numbers with commas between them",
         "plots the values along a line between two image pixels", setProfile},
        {L"--engine", "gdi|directdraw", "", "render engine (gdi)",
         [](Options& o, Text v) {
             o.directDraw = choose<bool>(v, {{L"gdi", false}, {L"directdraw", true}});
         }},
        {L"--save", "FILE", "a name that ends in .png, .jpg, .jpeg, .bmp, .tif or .tiff",
         "saves the picture that the window would show, as PNG, JPEG, BMP or TIFF by the name's ending",
         setSave},
        {L"--no-overlays", "", "", "leaves markers and overlays out of what is saved",
         [](Options& o, Text) {
             o.savesOverlays = false;
         }},
        {L"--format", "native|pal8|rgb15|rgb16|rgb24|rgb32", "",
         "pixel format of the render target that is saved; GDI engine only (native)", setFormat},
        {L"--full-screen", "", "", "begins without menu, frame and status line",
         [](Options& o, Text) {
             o.fullScreen = true;
         }},
        {L"--hold", "SECONDS", "a number from 0 to 86400", "keeps the window up that long, then leaves",
         [](Options& o, Text v) {
             o.hold = parseNumber(v, 0, 86400);
         }},
        {L"--no-state", "", "",
         "neither reads nor keeps window place, colour map and folder of the last time",
         [](Options& o, Text) {
             o.remembers = false;
         }},
        {L"--version", "", "", "says which version this is",
         [](Options& o, Text) {
             o.version = true;
         }},
        {L"--help", "", "", "this text; -h too",
         [](Options& o, Text) {
             o.help = true;
         }},
    };
    return table;
}

std::string allowedValues(const Option& option) {
    if (option.set == setMap) {
        std::string names;
        for (const ColorMap& map : colorMaps()) {
            names += (names.empty() ? "" : ", ") + utf8(map.name);
        }
        return names;
    }
    std::string allowed = option.allowed;
    if (allowed.empty()) {
        for (const char* from = option.value; *from; ++from) {
            allowed += *from == '|' ? ", " : std::string(1, *from);
        }
    }
    return allowed;
}

} // namespace talview
