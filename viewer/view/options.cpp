// The command line.
#include "viewer/view/options.h"

#include "viewer/view/failure.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <cwctype>

namespace talview {
namespace {

using Text = const std::wstring&;

struct BadValue {};

template <class Value>
struct Choice {
    std::wstring_view name;
    Value value;
};

template <class Value, std::size_t count>
Value choose(Text text, const Choice<Value> (&choices)[count]) {
    const auto* found = std::find_if(choices, choices + count, [&](auto& each) { return each.name == text; });
    return found == choices + count ? throw BadValue() : found->value;
}

// Takes a number from the front of text.
double takeNumber(const wchar_t*& text) {
    wchar_t* end = nullptr;
    const double number = std::wcstod(text, &end);
    if (end == text || std::iswspace(*text) || !std::isfinite(number)) {
        throw BadValue();
    }
    text = end;
    return number;
}

double parseNumber(Text value, double low, double high) {
    const wchar_t* text = value.c_str();
    const double number = takeNumber(text);
    return *text || number < low || number > high ? throw BadValue() : number;
}

Point parsePair(Text value, wchar_t separator = L',') {
    const wchar_t* text = value.c_str();
    Point pair;
    pair.x = takeNumber(text);
    if (*text++ != separator) {
        throw BadValue();
    }
    pair.y = takeNumber(text);
    return *text ? throw BadValue() : pair;
}

std::uint32_t parseColor(Text value) {
    const bool isHex = std::all_of(value.begin(), value.end(), [](wint_t c) { return iswxdigit(c) != 0; });
    return value.size() == 6 && isHex ? std::wcstoul(value.c_str(), nullptr, 16) : throw BadValue();
}

void setSize(Options& options, Text value) {
    const Point size = parsePair(value, L'x');
    for (double side : {size.x, size.y}) {
        if (side < 1 || side > 16384 || side != std::floor(side)) {
            throw BadValue();
        }
    }
    options.width = static_cast<long>(size.x);
    options.height = static_cast<long>(size.y);
}

void setMap(Options& options, Text value) {
    const auto& maps = colorMaps();
    const auto found = std::find_if(maps.begin(), maps.end(), [&](auto& map) { return value == map.name; });
    options.map = found == maps.end() ? throw BadValue() : &*found;
}

void setLimits(Options& options, Text value) {
    options.autoLimits = value == L"auto";
    if (!options.autoLimits) {
        const Point limits = parsePair(value);
        options.limits = limits.x < limits.y ? Limits{limits.x, limits.y} : throw BadValue();
    }
}

void setFormat(Options& options, Text value) {
    options.format = choose<int>(
        value,
        {{L"native", 0}, {L"pal8", 8}, {L"rgb15", 15}, {L"rgb16", 16}, {L"rgb24", 24}, {L"rgb32", 32}});
}

struct Option {
    const wchar_t* name;
    void (*set)(Options& options, Text value);
};

const Option valueOptions[] = {
    {L"--size", setSize},
    {L"--scale",
     [](Options& o, Text v) {
         o.scale = v == L"fit" ? std::nullopt : std::optional(parseNumber(v, 1e-3, 1e3));
     }},
    {L"--at",
     [](Options& o, Text v) {
         o.at = parsePair(v);
     }},
    {L"--method",
     [](Options& o, Text v) {
         o.centre = choose<bool>(v, {{L"nearest", false}, {L"centre", true}});
     }},
    {L"--map", setMap},
    {L"--limits", setLimits},
    {L"--depth",
     [](Options& o, Text v) {
         o.depth = choose<int>(v, {{L"8", 8}, {L"10", 10}, {L"12", 12}, {L"14", 14}, {L"16", 16}});
     }},
    {L"--kind",
     [](Options& o, Text v) {
         o.range = choose<bool>(v, {{L"auto", false}, {L"range", true}});
     }},
    {L"--mask",
     [](Options& o, Text v) {
         o.mask = v;
     }},
    {L"--mask-color",
     [](Options& o, Text v) {
         o.maskColor = parseColor(v);
     }},
    {L"--marker",
     [](Options& o, Text v) {
         o.markers.push_back(parsePair(v));
     }},
    {L"--engine",
     [](Options& o, Text v) {
         o.directDraw = choose<bool>(v, {{L"gdi", false}, {L"directdraw", true}});
     }},
    {L"--format", setFormat},
    {L"--save",
     [](Options& o, Text v) {
         o.save = v;
     }},
    {L"--hold",
     [](Options& o, Text v) {
         o.hold = parseNumber(v, 0, 86400);
     }},
};

} // namespace

const char helpText[] = R"(usage: talview [IMAGE|FOLDER] [options]
Shows a PNG, BMP, TIFF or JPEG picture, or the first one of a folder, in a window through a render engine.

  --size WxH            the picture in the window, in pixels (800x600)
  --scale S|fit         window pixels for each image pixel (fit)
  --at X,Y              place of the image's top left corner in the window (in the middle)
  --method nearest|centre
                        how a scaled image is sampled (nearest)
  --map NAME            colours of grey and range images (grey): grey invert heat ice rainbow terrain
  --limits LOW,HIGH|auto
                        values that get the map's first and last colour (the whole depth);
                        auto: the image's smallest and largest
  --depth 8|10|12|14|16 significant bits of a 16-bit grey image (16)
  --kind auto|range     range: a 16-bit grey file holds range values (auto)
  --mask FILE           mask of a range image: its black pixels hide the value; implies --kind range
  --mask-color RRGGBB   colour of hidden range pixels (400040)
  --marker X,Y          marks the middle of image pixel X,Y; may be repeated
  --engine gdi|directdraw
                        render engine (gdi)
  --save FILE           saves the picture that the window would show; PNG, JPEG, BMP or TIFF by the name's ending
  --format native|pal8|rgb15|rgb16|rgb24|rgb32
                        pixel format of the render target that is saved; GDI engine only (native)
  --hold SECONDS        keeps the window up that long, then leaves
  --help                this text

With --save alone no window appears; without --save and --hold it stays until it is closed. In the window:
the wheel or + and - zoom, dragging or the arrow keys move the image, 0 or F fits it, 1 shows its own size, M
changes the sampling method, C the colour map, Esc leaves. Ctrl+O or a file dropped on the window opens it, Page Up and Page Down show the other
pictures of its folder, F5 reads it again.
Exit code: 0 done, 1 it cannot be done, 2 the command line is wrong.
)";

Options parseOptions(const std::vector<std::wstring>& arguments) {
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto* option = std::find_if(std::begin(valueOptions), std::end(valueOptions),
                                          [&](const Option& each) { return *argument == each.name; });
        if (*argument == L"--help") {
            options.help = true;
            return options;
        }
        if (option != std::end(valueOptions)) {
            const std::string name = utf8(*argument);
            if (++argument == arguments.end()) {
                throw UsageError(name + " needs a value");
            }
            try {
                option->set(options, *argument);
            } catch (BadValue) {
                throw UsageError("bad value '" + utf8(*argument) + "' for " + name);
            }
        } else if (argument->starts_with(L"--")) {
            throw UsageError("unknown option " + utf8(*argument));
        } else if (!options.image.empty()) {
            throw UsageError("more than one image: " + utf8(*argument));
        } else {
            options.image = *argument;
        }
    }
    if (options.image.empty() && !options.interactive()) {
        throw UsageError("--save and --hold need an image");
    }
    if (options.directDraw && options.format != 0) {
        throw UsageError("--format needs --engine gdi: the DirectDraw engine has no render targets");
    }
    options.range |= !options.mask.empty();
    return options;
}

} // namespace talview
