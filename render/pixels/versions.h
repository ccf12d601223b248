// The versions of the pixel code: every inner loop is there for any processor and, where that pays, again for
// an instruction set, in a file of its own that is named after it. What the processor can do is asked once,
// when the program is loaded; a drawing function then takes its loop from activeVersions().
//
// All versions of a loop write the same bytes, at any address and to any extent: a side below 1 writes
// nothing.
#pragma once

#include "render/pixels/pixel_format.h"

#include <array>
#include <vector>

namespace talx {

enum class InstructionSet {
    Plain,
    Avx2,
    Avx512, // with byte permutes: F, BW, VL, VBMI
};

// destination = table[source] with 256 entries.
template <class Entry>
using Grey8Loop = void (*)(const PixelRows&, const ConstPixelRows& source, Extent, const Entry* table);

using ColorLoop = void (*)(const PixelRows&, const ConstPixelRows& red, const ConstPixelRows& green,
                           const ConstPixelRows& blue, Extent);

// 16-bit values through a table of 256 entries: (value & mask) >> shift, which is below 256, tells the entry.
// Only for extents that are not empty.
template <class Entry>
struct LevelTable {
    const Entry* entries;
    std::uint32_t mask;
    int shift;
};
// Where the mask is 0, pixel is shown instead.
template <class Entry>
struct HiddenPixels {
    ConstPixelRows mask;
    Entry pixel;
};
template <class Entry>
using LevelLoop = void (*)(const PixelRows&, const ConstPixelRows& source, Extent, const LevelTable<Entry>&,
                           const HiddenPixels<Entry>* hidden); // null: none are

// out[x] = the low byte of (the 16-bit word x of in & mask) >> shift, for one row.
using NarrowLoop = void (*)(std::uint8_t* out, const std::uint8_t* in, std::ptrdiff_t width,
                            std::uint32_t mask, int shift);

// pixel takes the place of out[x] where visible[x] is 0, for one row.
template <class Entry>
using HideLoop = void (*)(std::uint8_t* out, const std::uint8_t* visible, std::ptrdiff_t width, Entry pixel);

// What each index of an icon does to a pixel that was taken apart into four bytes, blue in the lowest and
// what a format has beside its colours in the highest: byte k becomes
// (byte * weight + colour * (128 - weight)) >> 7 with the k-th bytes of both entries.
struct BlendTable {
    std::array<std::uint32_t, 256> color;
    std::array<std::uint32_t, 256> weight; // 0 to 128 in each byte, the three lower ones alike
};
using BlendLoop = void (*)(const PixelRows&, const ConstPixelRows& icon, Extent, const BlendTable&);

// How to pick the pixels of a row out of a source row, the same in every row.
struct SamplePlan {
    std::vector<std::uint8_t> steps; // as the loop understands them
    std::ptrdiff_t rowBytes = 0;     // to write
    void (*loop)(std::uint8_t* out, const std::uint8_t* in, const SamplePlan&) = nullptr;
};
// Plans destination pixel x to show source pixel columns[x], each inside the source row. False when the
// version does not serve: for few pixels, too far apart, or from right to left. Throws std::bad_alloc; takes
// at most 10 bytes a column.
using SamplePlanner = bool (*)(SamplePlan&, const std::vector<std::int32_t>& columns,
                               std::int32_t sourceWidth, int bytesPerPixel);

struct Versions {
    Grey8Loop<std::uint8_t> grey8To8;
    Grey8Loop<std::uint16_t> grey8To16;
    Grey8Loop<ColorEntry> grey8To24;
    Grey8Loop<std::uint32_t> grey8To32;
    LevelLoop<std::uint16_t> levelsTo16;
    LevelLoop<ColorEntry> levelsTo24;
    LevelLoop<std::uint32_t> levelsTo32;
    NarrowLoop narrow; // of the level loops that have no better way
    HideLoop<std::uint16_t> hide16;
    HideLoop<ColorEntry> hide24;
    HideLoop<std::uint32_t> hide32;
    ColorLoop colorTo15, colorTo16, colorTo24, colorTo32;
    BlendLoop blend15, blend16, blend24, blend32;
    std::array<SamplePlanner, 2> samplePlanners; // to be asked in this order; null for none
};

[[nodiscard]] const Versions& activeVersions();

// Those for any processor, for what an instruction set has nothing better for.
[[nodiscard]] const Versions& plainVersions();

// The most that this processor can do and this build has loops for.
[[nodiscard]] InstructionSet bestInstructionSet();

// From now on no loop needs more than this instruction set. Not while anything is drawn: for tests and
// measurements.
void limitInstructionSet(InstructionSet);

// What versions.cpp puts together: each replaces the loops that it has something better for.
void takePlainRowConverters(Versions&);
void takePlainIconBlend(Versions&);
void takeAvx2RowConverters(Versions&);
void takeAvx2IconBlend(Versions&);
void takeAvx2Kernels(Versions&);
void takeAvx512RowConverters(Versions&);
void takeAvx512IconBlend(Versions&);
void takeAvx512Kernels(Versions&);

} // namespace talx
