// Colour maps: the owner's colours for grey and range values, and the per-format tables made of them.
//
// A table is either empty or complete and consistent with the map's colours, palette indices and size; it is
// built on first use for a pixel format.
#pragma once

#include "render/pixels/function_ref.h"
#include "render/pixels/pixel_format.h"

#include <vector>

namespace talx {

// The index of the colour nearest to 0x00BBGGRR in the engine's 256-entry palette.
using NearestPaletteIndex = FunctionRef<std::uint8_t(std::uint32_t colorRef)>;

// What a table of a format holds: the type of its entries and, where a format has colours, the entry of a
// colour. A format without one does not compile where a table of it is asked for.
template <PixelFormat Format>
struct TableFormat;
template <>
struct TableFormat<PixelFormat::Pal8> {
    using Entry = std::uint8_t;
};
template <>
struct TableFormat<PixelFormat::Rgb15> {
    using Entry = std::uint16_t;
    static constexpr Entry of(ColorEntry color) { return toRgb15(color); }
};
template <>
struct TableFormat<PixelFormat::Rgb16> {
    using Entry = std::uint16_t;
    static constexpr Entry of(ColorEntry color) { return toRgb16(color); }
};
template <>
struct TableFormat<PixelFormat::Rgb24> {
    using Entry = ColorEntry;
    static constexpr Entry of(ColorEntry color) { return color; }
};
template <>
struct TableFormat<PixelFormat::Rgb32> {
    using Entry = std::uint32_t;
    static constexpr Entry of(ColorEntry color) { return toRgb32(color); }
};
template <PixelFormat Format>
using TableEntry = typename TableFormat<Format>::Entry;

// Formats that something is done for in turn.
template <PixelFormat... Formats>
struct FormatList {
    static constexpr bool contains(PixelFormat format) { return ((format == Formats) || ...); }
};

// The tables of the formats that have colours, as every map holds them.
struct ColorTables {
    // Those of which there is a table; a format that is not listed does not compile where its table is asked
    // for.
    using Formats =
        FormatList<PixelFormat::Rgb15, PixelFormat::Rgb16, PixelFormat::Rgb24, PixelFormat::Rgb32>;

    std::vector<std::uint16_t> rgb15Table;
    std::vector<std::uint16_t> rgb16Table;
    std::vector<ColorEntry> rgb24Table;
    std::vector<std::uint32_t> rgb32Table;

    template <PixelFormat Format>
    [[nodiscard]] std::vector<TableEntry<Format>>& of();

    // Calls todo<Format>(table) for each of them.
    template <class Todo>
    void each(const Todo& todo) {
        [&]<PixelFormat... Format>(FormatList<Format...>) {
            (todo.template operator()<Format>(of<Format>()), ...);
        }
        (Formats{});
    }
    void clear() {
        each([]<PixelFormat>(auto& table) { table.clear(); });
    }
};
template <>
[[nodiscard]] inline std::vector<std::uint16_t>& ColorTables::of<PixelFormat::Rgb15>() {
    return rgb15Table;
}
template <>
[[nodiscard]] inline std::vector<std::uint16_t>& ColorTables::of<PixelFormat::Rgb16>() {
    return rgb16Table;
}
template <>
[[nodiscard]] inline std::vector<ColorEntry>& ColorTables::of<PixelFormat::Rgb24>() {
    return rgb24Table;
}
template <>
[[nodiscard]] inline std::vector<std::uint32_t>& ColorTables::of<PixelFormat::Rgb32>() {
    return rgb32Table;
}

// The map of 8-bit grey images.
class GreyColorMap8 {
public:
    GreyColorMap8();

    // The colour of entry k; the grey ramp where the owner gave fewer entries.
    [[nodiscard]] ColorEntry entry(std::uint8_t k) const;
    // Sets one colour and updates the tables in place. Where k lies beyond the entries, they grow up to it
    // with the grey ramp. nearest is asked only once there are palette indices.
    void setEntry(std::uint8_t k, ColorEntry color, const NearestPaletteIndex& nearest);

    [[nodiscard]] bool isSet() const { return isSet_; }
    [[nodiscard]] const std::vector<ColorEntry>& entries() const { return colorEntries_; }

    // Replacing all entries: beginReplace empties them and the tables and clears isSet, append adds one,
    // endReplace sets isSet. The palette indices stay as they are.
    void beginReplace();
    void append(ColorEntry color) { colorEntries_.push_back(color); }
    void endReplace() { isSet_ = true; }

    // The first 256 entries become the grey ramp. Entries beyond them, and the palette indices, stay as they
    // are.
    void clear();

    // Finds the palette index of every entry anew.
    void updatePalette(const NearestPaletteIndex& nearest);

    // The 256 entries of the table for a format, built if need be. Valid until the map changes.
    template <PixelFormat Format>
    const TableEntry<Format>* table();

private:
    template <PixelFormat Format>
    [[nodiscard]] TableEntry<Format> pixelOf(std::uint8_t k) const;
    template <PixelFormat Format>
    [[nodiscard]] std::vector<TableEntry<Format>>& tableOf();
    void dropTables();

    std::vector<std::uint8_t> paletteIndex_;
    std::vector<ColorEntry> colorEntries_;
    std::vector<std::uint8_t> pal8Table_;
    ColorTables tables_;
    bool isSet_ = false;
};

// The map of 16-bit grey or of 16-bit range images.
class ColorMap16 {
public:
    [[nodiscard]] const std::vector<ColorEntry>& entries() const { return colorEntries_; }
    [[nodiscard]] std::uint32_t tableSize() const { return tableSize_; }
    [[nodiscard]] std::uint32_t maxValue() const { return maxValue_; }

    // Replacing all entries: beginReplace empties them and the tables, append adds one, endReplace ends it. A
    // replacement that breaks off leaves the entries appended so far.
    void beginReplace();
    void append(ColorEntry color) { colorEntries_.push_back(color); }
    void endReplace() {}

    // Removes the owner's entries: every value shows the grey ramp.
    void clear() { beginReplace(); }

    // Sets the table size to 0: the next image sets it afresh.
    void unset() { tableSize_ = 0; }

    // How many image values the tables cover: 256, 1024, 4096, 16384 or 65536.
    void setSize(std::uint32_t tableSize);

    // The tableSize() entries of the table for a format other than Pal8, built if need be. Valid until the
    // map changes.
    template <PixelFormat Format>
    const TableEntry<Format>* table();

private:
    template <PixelFormat Format>
    void build();

    ColorTables tables_;
    std::vector<ColorEntry> colorEntries_;
    std::uint32_t tableSize_ = 0;
    std::uint32_t maxValue_ = 65535;
};

// The table size for the DepthCode of a 16-bit grey image.
[[nodiscard]] constexpr std::uint32_t tableSizeOfDepthCode(std::int32_t depthCode) {
    switch (depthCode) {
    case 1:
        return 1024;
    case 2:
        return 4096;
    case 3:
        return 16384;
    case 5:
        return 256;
    default:
        return 65536;
    }
}

} // namespace talx
