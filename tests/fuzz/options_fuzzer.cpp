// The viewer's command line, an argument on each line, and the same text as the files that it reads: whatever
// stands there, it is usable or refused.
#include "viewer/view/failure.h"
#include "viewer/view/limits.h"
#include "viewer/view/marker_text.h"
#include "viewer/view/options.h"
#include "viewer/view/placement.h"
#include "viewer/view/state.h"

#include <cmath>
#include <cstdlib>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace talview;
    const auto require = [](bool holds) {
        holds ? void() : std::abort();
    };
    const std::string text(data, data + size);
    const State state = parseState(text);
    require(parseState(formatState(state)) == state);
    try {
        const std::string markers = formatMarkers(parseMarkers(text));
        require(formatMarkers(parseMarkers(markers)) == markers);
    } catch (const Failure&) {
    }
    std::vector<std::wstring> arguments;
    std::wistringstream lines(std::wstring(data, data + size));
    for (std::wstring line; std::getline(lines, line);) {
        arguments.push_back(line);
    }
    try {
        const Options options = parseOptions(arguments);
        if (options.help || options.version) {
            return 0;
        }
        require(options.interactive() || !options.image.empty());
        require(options.width >= 1 && options.width <= 16384 && options.height >= 1 &&
                options.height <= 16384);
        require(options.maskColor <= 0xFFFFFF && options.hold.value_or(0) >= 0);
        Picture picture;
        picture.kind = PictureKind::grey16;
        picture.depth = options.depth;
        picture.scale = options.heights.value_or(ValueScale{});
        const Limits limits = openingLimits(options, picture);
        require(limits.low < limits.high);
        for (const std::uint32_t color : colorTable(*options.map, 256, limits)) {
            require(color <= 0xFFFFFF);
        }
        Placement placement(options.scale, options.at);
        placement.begin(4000, 3000);
        placement.resize(options.width, options.height);
        for (const Point p : options.markers) {
            const Point under = placement.toImage(p);
            placement.zoomTo(p, placement.scale() * 2);
            const double moved = (placement.toImage(p).x - under.x) * placement.scale(); // in the view
            require(std::abs(moved) < 2 || std::abs(p.x) > 1e6 || std::abs(placement.left()) > 1e6);
            placement.move(p);
            require(placement.scale() > 0 && placement.scale() <= 1000);
            require(std::abs(placement.left()) <= 1e9 && std::abs(placement.top()) <= 1e9);
        }
    } catch (const UsageError&) {
    }
    return 0;
}
