// A plain per-pixel model of drawing: what a buffer must hold after an image or an icon was drawn into it.
//
// It is slow and simple on purpose and shares no code with the engines, so that a test can compare the two:
// fill a Buffer with what the engine's buffer holds, draw into both, compare pixel by pixel.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace talx::model {

// Right and bottom exclusive. The fields are wider than 32 bits so that no sum or difference overflows.
struct Rect {
    std::int64_t left = 0, top = 0, right = 0, bottom = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

struct Color {
    std::uint8_t red = 0, green = 0, blue = 0;
};

// One plane of pixels, row after row, top row first.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> pixels; // width x height
    [[nodiscard]] std::uint16_t at(std::int64_t x, std::int64_t y) const { return pixels.at(y * width + x); }
};

enum class Kind { grey8, color, grey16, range16 };

struct Image {
    Kind kind = Kind::grey8;
    // One; color: red, green, blue; range16: the values, then the mask if it has one.
    std::vector<Plane> planes;
    std::int32_t depthCode = 0; // of grey16
};

// The colour settings of an engine.
struct ColorState {
    std::vector<Color> grey8;                     // values without an entry show the grey ramp
    std::array<std::uint8_t, 256> paletteIndex{}; // what each 8-bit grey value shows on a palettised buffer
    std::vector<Color> grey16, range16;           // as grey8
    bool maskEnabled = false;
    std::uint32_t maskColor = 0; // the owner's word as it stands
};

struct Buffer {
    int format = 0; // 8, 15, 16, 24 or 32
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels; // width x height, each the little-endian number in its bytes
    [[nodiscard]] std::uint32_t& at(std::int64_t x, std::int64_t y) { return pixels.at(y * width + x); }
};

constexpr int nearestMethod = 0; // and every number but 1
constexpr int centreMethod = 1;

// Draws an image at (sx, sy), clipped to the caller's rectangle and to the buffer.
void drawImage(Buffer& buffer, const Image& image, const ColorState& colors, std::int32_t sx, std::int32_t sy,
               double scale, const Rect& caller, int scalingMethod);

struct Icon {
    Plane pixels;
    std::array<Color, 256> colors{};              // translated already
    std::array<std::uint8_t, 256> transparency{}; // in per cent, as the owner gives it
};

// The index of a palettised buffer's palette that comes nearest to a colour.
using NearestIndex = std::function<std::uint8_t(Color)>;

// Draws an icon at (x, y), clipped to the caller's rectangle and to the buffer. nearest may be empty unless
// the buffer is palettised.
void drawIcon(Buffer& buffer, const Icon& icon, double x, double y, double scale, const Rect& caller,
              const NearestIndex& nearest);

// --- The steps of drawing, for tests of one step ---

// The buffer rectangle that an image of this size covers.
[[nodiscard]] Rect place(std::int32_t sx, std::int32_t sy, int width, int height, double scale);

struct Position {
    std::int64_t x = 0, y = 0;
};

// Which pixel of a width x height source is seen at (x, y) of the scaled image when its part target is made.
// Nothing when the method leaves target as it was.
[[nodiscard]] std::optional<Position> sourceOf(int width, int height, double scale, const Rect& target,
                                               int scalingMethod, std::int64_t x, std::int64_t y);

// What a colour, an 8-bit grey value, a 16-bit value of count possible ones and the visible-pixel-mask word
// show in format 15, 16, 24 or 32 (greyPixel8: 8, too).
[[nodiscard]] std::uint32_t pack(int format, Color color);
[[nodiscard]] std::uint32_t greyPixel8(int format, const ColorState& colors, std::uint8_t value);
[[nodiscard]] std::uint32_t greyPixel16(int format, const std::vector<Color>& entries, std::uint32_t count,
                                        std::uint16_t value);
[[nodiscard]] std::uint32_t maskPixel(int format, std::uint32_t word);

// How many values a 16-bit grey image with this DepthCode has.
[[nodiscard]] std::uint32_t valueCount(std::int32_t depthCode);

// The share of the buffer's pixel, in 128ths, for a transparency; and the buffer's pixel after a colour was
// blended over it with such a share, in format 15, 16, 24 or 32.
[[nodiscard]] std::uint32_t iconWeight(std::uint8_t transparency);
[[nodiscard]] std::uint32_t blend(int format, std::uint32_t buffer, Color color, std::uint32_t weight);

} // namespace talx::model
