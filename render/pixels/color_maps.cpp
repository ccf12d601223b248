// Colour maps: how an owner's colours become the look-up tables of each pixel format.
#include "render/pixels/color_maps.h"

#include <algorithm>

namespace talx {
namespace {

constexpr std::uint32_t greyLevels = 256;

// Lengthens entries to a count, at most 256, with the grey ramp.
void growTo(std::vector<ColorEntry>& entries, std::size_t count) {
    entries.reserve(count);
    while (entries.size() < count)
        entries.push_back(greyEntry(static_cast<std::uint32_t>(entries.size())));
}

} // namespace

GreyColorMap8::GreyColorMap8() {
    growTo(colorEntries_, greyLevels);
}

ColorEntry GreyColorMap8::entry(std::uint8_t k) const {
    return k < colorEntries_.size() ? colorEntries_[k] : greyEntry(k);
}

template <PixelFormat Format>
TableEntry<Format> GreyColorMap8::pixelOf(std::uint8_t k) const {
    return TableFormat<Format>::of(entry(k));
}
template <>
std::uint8_t GreyColorMap8::pixelOf<PixelFormat::Pal8>(std::uint8_t k) const {
    return paletteIndex_.empty() ? std::uint8_t{0} : paletteIndex_[k];
}

template <PixelFormat Format>
std::vector<TableEntry<Format>>& GreyColorMap8::tableOf() {
    static_assert(ColorTables::Formats::contains(Format));
    return tables_.of<Format>();
}
template <>
std::vector<std::uint8_t>& GreyColorMap8::tableOf<PixelFormat::Pal8>() {
    return pal8Table_;
}

void GreyColorMap8::setEntry(std::uint8_t k, ColorEntry color, const NearestPaletteIndex& nearest) {
    if (colorEntries_.size() <= k)
        growTo(colorEntries_, k + std::size_t{1});
    if (!paletteIndex_.empty())
        paletteIndex_[k] = nearest(toColorRef(color));
    colorEntries_[k] = color;
    isSet_ = true;
    const auto update = [&]<PixelFormat Format>(auto& table) {
        if (!table.empty())
            table[k] = pixelOf<Format>(k);
    };
    update.operator()<PixelFormat::Pal8>(pal8Table_);
    tables_.each(update);
}

void GreyColorMap8::beginReplace() {
    colorEntries_.clear();
    isSet_ = false;
    dropTables();
}

void GreyColorMap8::clear() {
    growTo(colorEntries_, greyLevels);
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
    tables_.clear();
}

template <PixelFormat Format>
const TableEntry<Format>* GreyColorMap8::table() {
    auto& table = tableOf<Format>();
    if (table.empty()) {
        table.resize(greyLevels);
        for (std::size_t v = 0; v < greyLevels; ++v)
            table[v] = pixelOf<Format>(static_cast<std::uint8_t>(v));
    }
    return table.data();
}

template const std::uint8_t* GreyColorMap8::table<PixelFormat::Pal8>();
template const std::uint16_t* GreyColorMap8::table<PixelFormat::Rgb15>();
template const std::uint16_t* GreyColorMap8::table<PixelFormat::Rgb16>();
template const ColorEntry* GreyColorMap8::table<PixelFormat::Rgb24>();
template const std::uint32_t* GreyColorMap8::table<PixelFormat::Rgb32>();

void ColorMap16::beginReplace() {
    colorEntries_.clear();
    tables_.clear();
}

void ColorMap16::setSize(std::uint32_t tableSize) {
    tableSize_ = tableSize;
    maxValue_ = tableSize - 1;
}

template <PixelFormat Format>
void ColorMap16::build() {
    auto& table = tables_.of<Format>();
    table.clear(); // stays so when there is no memory for the new one
    table.resize(tableSize_);
    if (colorEntries_.size() < tableSize_) {
        const std::uint32_t run = tableSize_ / greyLevels;
        auto out = table.begin();
        for (std::uint32_t level = 0; level < greyLevels; ++level)
            out = std::fill_n(out, run, TableFormat<Format>::of(greyEntry(level)));
    }
    const std::size_t count = std::min<std::size_t>(colorEntries_.size(), tableSize_);
    std::transform(colorEntries_.begin(), colorEntries_.begin() + static_cast<std::ptrdiff_t>(count),
                   table.begin(), &TableFormat<Format>::of);
}

template <PixelFormat Format>
const TableEntry<Format>* ColorMap16::table() {
    static_assert(ColorTables::Formats::contains(Format));
    auto& table = tables_.of<Format>();
    if (table.size() != tableSize_)
        build<Format>();
    return table.data();
}

template const std::uint16_t* ColorMap16::table<PixelFormat::Rgb15>();
template const std::uint16_t* ColorMap16::table<PixelFormat::Rgb16>();
template const ColorEntry* ColorMap16::table<PixelFormat::Rgb24>();
template const std::uint32_t* ColorMap16::table<PixelFormat::Rgb32>();

} // namespace talx
