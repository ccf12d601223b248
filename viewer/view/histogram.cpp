// Counting.
#include "viewer/view/histogram.h"

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

// Neighbours are counted in tables of their own, for they are often equal, and adding to a number that has
// just been added to has to wait. 32 bits suffice for 2^34 pixels, all of one value.
constexpr std::size_t ways = 4;

template <class Pel, class Weight>
std::vector<std::uint64_t> count(const Block<Pel>& pels, std::uint32_t valueCount, Weight weight) {
    std::vector<std::uint32_t> tables(ways * valueCount);
    const std::uint32_t bits = valueCount - 1;
    const Pel* const data = pels.data();
    const std::size_t whole = pels.size() / ways * ways;
    for (std::size_t i = 0; i < whole; i += ways) {
        for (std::size_t way = 0; way < ways; ++way) {
            tables[way * valueCount + (data[i + way] & bits)] += weight(i + way);
        }
    }
    for (std::size_t i = whole; i < pels.size(); ++i) {
        tables[data[i] & bits] += weight(i);
    }
    std::vector<std::uint64_t> sums(valueCount);
    for (std::size_t i = 0; i < tables.size(); ++i) {
        sums[i & bits] += tables[i];
    }
    return sums;
}

template <class Pel>
std::vector<std::uint64_t> countVisible(const Picture& picture, const Block<Pel>& pels) {
    if (picture.mask) {
        return count(pels, picture.valueCount(), [mask = picture.mask.data()](std::size_t i) {
            return static_cast<std::uint32_t>(mask[i] != 0);
        });
    }
    return count(pels, picture.valueCount(), [](std::size_t) { return 1u; });
}

} // namespace

ValueCounts countValues(const Picture& picture) {
    switch (picture.kind) {
    case PictureKind::grey8:
        return {countVisible(picture, picture.bytes[0])};
    case PictureKind::grey16:
    case PictureKind::range16:
        return {countVisible(picture, picture.words)};
    case PictureKind::color:
        break;
    }
    ValueCounts counts;
    for (const auto& plane : picture.bytes) {
        counts.push_back(countVisible(picture, plane));
    }
    return counts;
}

Histogram histogram(const ValueCounts& counts, Limits limits) {
    constexpr double mostBins = 256;
    const double last = std::min(std::floor(limits.high), counts.front().size() - 1.0);
    const double first = std::max(std::ceil(limits.low), 0.0);
    if (!(first <= last)) {
        return {};
    }
    Histogram histogram;
    histogram.first = static_cast<std::uint32_t>(first);
    histogram.perBin = static_cast<std::uint32_t>(std::ceil((last - first + 1) / mostBins));
    const auto size = static_cast<std::size_t>(last - first) / histogram.perBin + 1;
    for (const auto& channel : counts) {
        auto& bins = histogram.bins.emplace_back(size);
        for (auto value = histogram.first; value <= last; ++value) {
            bins[(value - histogram.first) / histogram.perBin] += channel[value];
        }
        histogram.most = std::max(histogram.most, *std::max_element(bins.begin(), bins.end()));
    }
    return histogram;
}

} // namespace talview
