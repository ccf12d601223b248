// Colour maps: the owner's colours for grey and range values, and the per-format tables made of them.
//
// A table is either empty or complete and consistent with the map's colours, palette indices and size; it is
// built on first use for a layer format.
#pragma once

#include "render/pixels/pixel_format.h"

#include <array>
#include <functional>
#include <vector>

namespace talx {

// The index of the colour nearest to 0x00BBGGRR in the engine's 256-entry palette.
using NearestPaletteIndex = std::function<std::uint8_t(std::uint32_t colorRef)>;

// The table of a format has entries of this type.
template <LayerFormat Format>
struct TableEntry;
template <>
struct TableEntry<LayerFormat::Pal8> {
    using type = std::uint8_t;
};
template <>
struct TableEntry<LayerFormat::Rgb15> {
    using type = std::uint16_t;
};
template <>
struct TableEntry<LayerFormat::Rgb16> {
    using type = std::uint16_t;
};
template <>
struct TableEntry<LayerFormat::Rgb24> {
    using type = ColorEntry;
};
template <>
struct TableEntry<LayerFormat::Rgb32> {
    using type = std::uint32_t;
};

// The map of 8-bit grey images.
class GreyColorMap8 {
public:
    GreyColorMap8();

    // The colour of entry k; the grey ramp where the owner gave fewer entries.
    [[nodiscard]] ColorEntry entry(std::uint8_t k) const;
    // Sets one colour and updates the tables in place; the map then has at least 256 entries. nearest is
    // asked only once there are palette indices.
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
    template <LayerFormat Format>
    const typename TableEntry<Format>::type* table();

private:
    template <LayerFormat Format>
    std::vector<typename TableEntry<Format>::type>& tableOf();
    template <LayerFormat Format>
    typename TableEntry<Format>::type pixelOf(std::uint8_t k) const;
    template <LayerFormat Format>
    void updateTable(std::uint8_t k);
    void dropTables();

    std::vector<std::uint8_t> paletteIndex_;
    std::array<std::uint8_t, 256> greyToEntry_;
    std::vector<ColorEntry> colorEntries_;
    std::vector<std::uint8_t> pal8Table_;
    std::vector<std::uint16_t> rgb15Table_;
    std::vector<std::uint16_t> rgb16Table_;
    std::vector<ColorEntry> rgb24Table_;
    std::vector<std::uint32_t> rgb32Table_;
    bool isSet_ = false;
};

// The map of 16-bit grey or of 16-bit range images.
class ColorMap16 {
public:
    [[nodiscard]] const std::vector<ColorEntry>& entries() const { return colorEntries_; }
    [[nodiscard]] std::uint32_t tableSize() const { return tableSize_; }
    [[nodiscard]] std::uint32_t maxValue() const { return maxValue_; }

    // Replacing all entries: beginReplace empties them, append adds one, endReplace rebuilds the tables that
    // were in use. A replacement that breaks off leaves the entries appended so far and no table.
    void beginReplace();
    void append(ColorEntry color) { colorEntries_.push_back(color); }
    void endReplace();

    // Removes the owner's entries: the tables in use become the grey ramp.
    void clear();

    // Sets the table size to 0: the next image sets it afresh.
    void unset() { tableSize_ = 0; }

    // How many image values the tables cover: 256, 1024, 4096, 16384 or 65536.
    void setSize(std::uint32_t tableSize);

    // The tableSize() entries of the table for a format other than Pal8, built if need be. Valid until the
    // map changes.
    template <LayerFormat Format>
    const typename TableEntry<Format>::type* table();

private:
    struct TablesInUse {
        bool rgb15 = false;
        bool rgb16 = false;
        bool rgb24 = false;
        bool rgb32 = false;
    };

    template <LayerFormat Format>
    std::vector<typename TableEntry<Format>::type>& tableOf();
    template <LayerFormat Format>
    void build();

    std::vector<std::uint16_t> rgb15Table_;
    std::vector<std::uint16_t> rgb16Table_;
    std::vector<ColorEntry> rgb24Table_;
    std::vector<std::uint32_t> rgb32Table_;
    std::vector<ColorEntry> colorEntries_;
    std::uint32_t tableSize_ = 0;
    std::uint32_t maxValue_ = 65535;
    TablesInUse inUse_; // before the replacement that is under way
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
