// Sampling and plotting.
#include "viewer/view/profile.h"

#include "viewer/view/pixel_values.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace talview {
namespace {

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double longest = 1e9; // pixels; far beyond, one step more is no other number

// The samples of one coordinate that lie inside a side of the picture, by their numbers: from the first on,
// each step adds the same.
struct Inside {
    double first;
    double last;

    Inside(double begin, double step, double count, long size) : first(0), last(count - 1) {
        // One more at either end than are inside, so that rounding leaves none out.
        const double toLow = (-0.5 - begin) / step;
        const double toHigh = (static_cast<double>(size) - 0.5 - begin) / step;
        if (step != 0) {
            first = std::max(first, std::floor(std::min(toLow, toHigh)) - 1);
            last = std::min(last, std::ceil(std::max(toLow, toHigh)) + 1);
        }
    }
};

// The pixel, counted from 0, where a sample lies; none beside the picture.
std::optional<long> pixelAt(double place, long size) {
    const double pixel = std::floor(place + 0.5);
    return pixel >= 0 && pixel < static_cast<double>(size) ? std::optional(static_cast<long>(pixel))
                                                           : std::nullopt;
}

} // namespace

Limits Profile::extremes() const {
    Limits found{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    for (const auto& curve : curves) {
        for (const double value : curve) {
            if (std::isfinite(value)) {
                found = {std::min(found.low, value), std::max(found.high, value)};
            }
        }
    }
    return found.low <= found.high ? found : Limits{};
}

Profile profileAlong(const Picture& picture, const Line& line) {
    const double dx = line.to.x - line.from.x;
    const double dy = line.to.y - line.from.y;
    const double count = std::round(std::max(std::abs(dx), std::abs(dy))) + 1;
    if (!(count <= longest)) {
        return {};
    }
    const double parts = std::max(count - 1, 1.0);
    const Inside across(line.from.x, dx / parts, count, picture.width);
    const Inside down(line.from.y, dy / parts, count, picture.height);

    Profile profile;
    profile.step = std::hypot(dx, dy) / parts;
    const double last = std::min(across.last, down.last);
    for (double i = std::max(across.first, down.first); i <= last; ++i) {
        const auto x = pixelAt(line.from.x + dx * (i / parts), picture.width);
        const auto y = pixelAt(line.from.y + dy * (i / parts), picture.height);
        if (!x || !y) {
            continue;
        }
        if (profile.curves.empty()) {
            profile.start = i * profile.step;
            profile.curves.resize(PixelValues::countOf(picture));
        }
        const PixelValues values(picture, *x, *y);
        const bool isHidden = picture.isHidden(picture.at(*x, *y));
        for (std::size_t curve = 0; curve < profile.curves.size(); ++curve) {
            profile.curves[curve].push_back(isHidden ? noNumber : values.values()[curve]);
        }
    }
    return profile;
}

std::vector<ColumnRange> columnRanges(const std::vector<double>& curve, int columns) {
    std::vector<ColumnRange> ranges(columns, {noNumber, noNumber});
    if (curve.empty() || columns < 1) {
        return ranges;
    }
    const auto lastSample = static_cast<double>(curve.size() - 1);
    const double perColumn = lastSample / std::max(columns - 1, 1);
    // Between two samples of which one is no number there is none either.
    const auto at = [&](double place) {
        const double inside = std::clamp(place, 0.0, lastSample);
        const auto before = static_cast<std::size_t>(inside);
        const double share = inside - static_cast<double>(before);
        return share == 0 ? curve[before] : curve[before] + (curve[before + 1] - curve[before]) * share;
    };
    for (int column = 0; column < columns; ++column) {
        ColumnRange& range = ranges[column];
        const auto include = [&](double value) {
            range.low = std::fmin(range.low, value);
            range.high = std::fmax(range.high, value);
        };
        const double begin = std::max((column - 0.5) * perColumn, 0.0);
        const double end = std::min((column + 0.5) * perColumn, lastSample);
        include(at(begin));
        include(at(end));
        for (auto sample = std::ceil(begin); sample <= end; ++sample) {
            include(curve[static_cast<std::size_t>(sample)]);
        }
    }
    return ranges;
}

} // namespace talview
