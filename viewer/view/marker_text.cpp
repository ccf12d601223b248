// Lines into markers and back.
#include "viewer/view/marker_text.h"

#include "viewer/view/failure.h"
#include "viewer/view/numbers.h"
#include "viewer/view/text_lines.h"

namespace talview {
namespace {

// A field of a line up to a separator or the end.
std::string_view takeField(std::string_view& line) {
    const std::size_t end = std::min(line.find(','), line.size());
    const std::string_view field = withoutBlanks(line.substr(0, end));
    line.remove_prefix(end);
    return field;
}

std::optional<double> asNumber(std::string_view field) {
    const auto number = takeNumber(field);
    return field.empty() ? number : std::nullopt;
}

std::optional<Point> parseMarker(std::string_view line) {
    const auto x = asNumber(takeField(line));
    if (!x || line.empty()) {
        return std::nullopt;
    }
    line.remove_prefix(1);
    const auto y = asNumber(takeField(line));
    return y && line.empty() ? std::optional(Point{*x, *y}) : std::nullopt;
}

bool isHeader(std::string_view line) {
    const std::string_view x = takeField(line);
    return x == "x" && !line.empty() && withoutBlanks(line.substr(1)) == "y";
}

} // namespace

std::vector<Point> parseMarkers(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) {
        text.remove_prefix(3);
    }
    std::vector<Point> markers;
    bool isBegun = false;
    for (long number = 1; !text.empty(); ++number) {
        const std::string_view line = takeLine(text);
        if (line.empty()) {
            continue;
        }
        const auto marker = parseMarker(line);
        if (isBegun ? !marker : !isHeader(line)) {
            throw Failure("line " + std::to_string(number) + " is not " +
                          (isBegun ? "two numbers with a comma between them" : "the heading x,y"));
        }
        if (isBegun) {
            markers.push_back(*marker);
        }
        isBegun = true;
    }
    return isBegun ? markers : throw Failure("line 1 is not the heading x,y");
}

std::string formatMarkers(const std::vector<Point>& markers) {
    std::string text = "x,y\n";
    for (const Point& marker : markers) {
        text += plainNumber(marker.x) + "," + plainNumber(marker.y) + "\n";
    }
    return text;
}

} // namespace talview
