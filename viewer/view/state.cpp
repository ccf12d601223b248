// Lines into a state and back.
#include "viewer/view/state.h"

#include "viewer/view/failure.h"
#include "viewer/view/text_lines.h"

#include <charconv>

namespace talview {
namespace {

// Four whole numbers with commas between them, of a place that a desktop can have; otherwise an empty box.
Box parseBox(std::string_view text) {
    long sides[4];
    const char* from = text.data();
    const char* const end = from + text.size();
    for (long& side : sides) {
        if (&side != sides && (from == end || *from++ != ',')) {
            return {};
        }
        const auto [next, error] = std::from_chars(from, end, side);
        if (error != std::errc() || side < -0x7FFF || side > 0x7FFF) {
            return {};
        }
        from = next;
    }
    const Box box{sides[0], sides[1], sides[2], sides[3]};
    return from == end && !box.isEmpty() ? box : Box{};
}

} // namespace

State parseState(std::string_view text) {
    State state;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        const std::size_t equals = std::min(line.find('='), line.size());
        const std::string_view key = line.substr(0, equals);
        const std::string_view value = line.substr(std::min(equals + 1, line.size()));
        if (key == "place") {
            state.place = parseBox(value);
        } else if (key == "maximised") {
            state.isMaximised = value == "1";
        } else if (key == "map") {
            state.map = wide(value);
        } else if (key == "folder") {
            state.folder = wide(value);
        }
    }
    return state;
}

std::string formatState(const State& state) {
    std::string text;
    if (const Box& place = state.place; !place.isEmpty()) {
        text = "place=" + std::to_string(place.left) + "," + std::to_string(place.top) + "," +
               std::to_string(place.right) + "," + std::to_string(place.bottom) + "\n";
    }
    text += state.isMaximised ? "maximised=1\n" : "maximised=0\n";
    return text + "map=" + utf8(state.map) + "\nfolder=" + utf8(state.folder) + "\n";
}

void useState(Options& options, const State& state) {
    const auto& maps = colorMaps();
    const auto map =
        std::find_if(maps.begin(), maps.end(), [&](const ColorMap& each) { return state.map == each.name; });
    if (map != maps.end() && !options.has(L"--map")) {
        options.map = &*map;
    }
    options.folder = state.folder;
}

} // namespace talview
