// Colour maps: how an owner's colours become the look-up tables of each layer format.
#include "render/pixels/color_maps.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace talx {
namespace {

constexpr std::uint32_t greyLevels = 256;

template <LayerFormat Format>
auto toPixel(ColorEntry e) {
    if constexpr (Format == LayerFormat::Rgb15)
        return toRgb15(e);
    else if constexpr (Format == LayerFormat::Rgb16)
        return toRgb16(e);
    else if constexpr (Format == LayerFormat::Rgb24)
        return e;
    else
        return toRgb32(e);
}

// Lengthens entries to the 256 of a whole map with their grey ramp.
void growToWholeMap(std::vector<ColorEntry>& entries) {
    entries.reserve(greyLevels);
    while (entries.size() < greyLevels)
        entries.push_back(greyEntry(static_cast<std::uint32_t>(entries.size())));
}

} // namespace

GreyColorMap8::GreyColorMap8() {
    std::iota(greyToEntry_.begin(), greyToEntry_.end(), std::uint8_t{0});
    growToWholeMap(colorEntries_);
}

ColorEntry GreyColorMap8::entry(std::uint8_t k) const {
    return k < colorEntries_.size() ? colorEntries_[k] : greyEntry(k);
}

template <LayerFormat Format>
std::vector<typename TableEntry<Format>::type>& GreyColorMap8::tableOf() {
    if constexpr (Format == LayerFormat::Pal8)
        return pal8Table_;
    else if constexpr (Format == LayerFormat::Rgb15)
        return rgb15Table_;
    else if constexpr (Format == LayerFormat::Rgb16)
        return rgb16Table_;
    else if constexpr (Format == LayerFormat::Rgb24)
        return rgb24Table_;
    else
        return rgb32Table_;
}

template <LayerFormat Format>
typename TableEntry<Format>::type GreyColorMap8::pixelOf(std::uint8_t k) const {
    if constexpr (Format == LayerFormat::Pal8)
        return paletteIndex_.empty() ? std::uint8_t{0} : paletteIndex_[k];
    else
        return toPixel<Format>(entry(k));
}

template <LayerFormat Format>
void GreyColorMap8::updateTable(std::uint8_t k) {
    auto& table = tableOf<Format>();
    for (std::size_t v = 0; v < table.size(); ++v) {
        if (greyToEntry_[v] == k)
            table[v] = pixelOf<Format>(k);
    }
}

void GreyColorMap8::setEntry(std::uint8_t k, ColorEntry color, const NearestPaletteIndex& nearest) {
    growToWholeMap(colorEntries_);
    if (!paletteIndex_.empty())
        paletteIndex_[k] = nearest(toColorRef(color));
    colorEntries_[k] = color;
    isSet_ = true;
    updateTable<LayerFormat::Pal8>(k);
    updateTable<LayerFormat::Rgb15>(k);
    updateTable<LayerFormat::Rgb16>(k);
    updateTable<LayerFormat::Rgb24>(k);
    updateTable<LayerFormat::Rgb32>(k);
}

void GreyColorMap8::beginReplace() {
    colorEntries_.clear();
    isSet_ = false;
    dropTables();
}

void GreyColorMap8::clear() {
    growToWholeMap(colorEntries_);
    for (std::uint32_t g = 0; g < greyLevels; ++g)
        colorEntries_[g] = greyEntry(g);
    isSet_ = false;
    dropTables();
}

void GreyColorMap8::updatePalette(const NearestPaletteIndex& nearest) {
    pal8Table_.clear();
    paletteIndex_.resize(greyLevels);
    for (std::size_t i = 0; i < greyLevels; ++i)
        paletteIndex_[i] = nearest(toColorRef(entry(static_cast<std::uint8_t>(i))));
}

void GreyColorMap8::dropTables() {
    pal8Table_.clear();
    rgb15Table_.clear();
    rgb16Table_.clear();
    rgb24Table_.clear();
    rgb32Table_.clear();
}

template <LayerFormat Format>
const typename TableEntry<Format>::type* GreyColorMap8::table() {
    auto& table = tableOf<Format>();
    if (table.empty()) {
        table.resize(greyLevels);
        for (std::size_t v = 0; v < greyLevels; ++v)
            table[v] = pixelOf<Format>(greyToEntry_[v]);
    }
    return table.data();
}

template const std::uint8_t* GreyColorMap8::table<LayerFormat::Pal8>();
template const std::uint16_t* GreyColorMap8::table<LayerFormat::Rgb15>();
template const std::uint16_t* GreyColorMap8::table<LayerFormat::Rgb16>();
template const ColorEntry* GreyColorMap8::table<LayerFormat::Rgb24>();
template const std::uint32_t* GreyColorMap8::table<LayerFormat::Rgb32>();

template <LayerFormat Format>
std::vector<typename TableEntry<Format>::type>& ColorMap16::tableOf() {
    if constexpr (Format == LayerFormat::Rgb15)
        return rgb15Table_;
    else if constexpr (Format == LayerFormat::Rgb16)
        return rgb16Table_;
    else if constexpr (Format == LayerFormat::Rgb24)
        return rgb24Table_;
    else
        return rgb32Table_;
}

void ColorMap16::beginReplace() {
    inUse_ = {!rgb15Table_.empty(), !rgb16Table_.empty(), !rgb24Table_.empty(), !rgb32Table_.empty()};
    rgb15Table_.clear();
    rgb16Table_.clear();
    rgb24Table_.clear();
    rgb32Table_.clear();
    colorEntries_.clear();
}

void ColorMap16::endReplace() {
    const TablesInUse inUse = std::exchange(inUse_, {});
    if (inUse.rgb15)
        build<LayerFormat::Rgb15>();
    if (inUse.rgb16)
        build<LayerFormat::Rgb16>();
    if (inUse.rgb24)
        build<LayerFormat::Rgb24>();
    if (inUse.rgb32)
        build<LayerFormat::Rgb32>();
}

void ColorMap16::clear() {
    beginReplace();
    endReplace();
}

void ColorMap16::setSize(std::uint32_t tableSize) {
    tableSize_ = tableSize;
    maxValue_ = tableSize - 1;
}

template <LayerFormat Format>
void ColorMap16::build() {
    auto& table = tableOf<Format>();
    table.clear(); // stays so when there is no memory for the new one
    table.resize(tableSize_);
    if (colorEntries_.size() < tableSize_) {
        const std::uint32_t run = tableSize_ / greyLevels;
        auto out = table.begin();
        for (std::uint32_t level = 0; level < greyLevels; ++level)
            out = std::fill_n(out, run, toPixel<Format>(greyEntry(level)));
    }
    const std::size_t count = std::min<std::size_t>(colorEntries_.size(), tableSize_);
    std::transform(colorEntries_.begin(), colorEntries_.begin() + static_cast<std::ptrdiff_t>(count),
                   table.begin(), toPixel<Format>);
}

template <LayerFormat Format>
const typename TableEntry<Format>::type* ColorMap16::table() {
    auto& table = tableOf<Format>();
    if (table.size() != tableSize_)
        build<Format>();
    return table.data();
}

template const std::uint16_t* ColorMap16::table<LayerFormat::Rgb15>();
template const std::uint16_t* ColorMap16::table<LayerFormat::Rgb16>();
template const ColorEntry* ColorMap16::table<LayerFormat::Rgb24>();
template const std::uint32_t* ColorMap16::table<LayerFormat::Rgb32>();

} // namespace talx
