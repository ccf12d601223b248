// A picture in plain memory: what a file gives, what an image object is wrapped around, and what is asked for
// its values.
#pragma once

#include "viewer/view/value_scale.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace talview {

enum class PictureKind { grey8, grey16, range16, color };

// The pels of a plane, or the values of several channels one after the other: rows from the top without
// padding. Not set to anything when made.
template <class Pel>
class Block {
public:
    Block() = default;
    explicit Block(std::size_t size) : size_(size), pels_(std::make_unique_for_overwrite<Pel[]>(size)) {}

    explicit operator bool() const { return size_ != 0; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] Pel* data() { return pels_.get(); }
    [[nodiscard]] const Pel* data() const { return pels_.get(); }
    [[nodiscard]] Pel& operator[](std::size_t at) { return pels_[at]; }
    [[nodiscard]] const Pel& operator[](std::size_t at) const { return pels_[at]; }

private:
    std::size_t size_ = 0;
    std::unique_ptr<Pel[]> pels_;
};

// What the numbers of a file are.
enum class Sample { whole, signedWhole, fixedPoint, real };

struct Picture {
    PictureKind kind = PictureKind::grey8;
    long width = 0;
    long height = 0;
    int depth = 8; // significant bits of a grey value: 8, or 8, 10, 12, 14 or 16 of grey16, or 16 of range16;
                   // of color: 16 where the file has more than 8 of a channel

    std::array<Block<std::uint8_t>, 3> bytes; // grey8: the first; color: red, green, blue
    Block<std::uint16_t> words;               // grey16, range16
    Block<std::uint8_t> mask;                 // range16: 0 hides the value; empty: none is hidden
    ValueScale scale;                         // of grey and range values

    // What the file holds, where what is shown had to be made from it: one block or the other, with so many
    // channels for each pixel.
    int channels = 0;
    Block<std::uint16_t> deep;
    Block<float> real;
    Sample sample = Sample::whole; // of real; those of whole numbers have 32 bits
    ValueScale realScale;          // of real grey and range values

    // From now on, values mean what the scale gives of what they meant.
    void rescale(const ValueScale& heights) {
        scale = heights.after(scale);
        realScale = heights.after(realScale);
    }

    [[nodiscard]] std::size_t at(long x, long y) const { return static_cast<std::size_t>(width) * y + x; }
    // Number of different values that a pel can have.
    [[nodiscard]] std::uint32_t valueCount() const { return 1u << depth; }
    [[nodiscard]] bool hasMap() const { return kind != PictureKind::color; }

    // Of grey and range pictures: what the colour map is looked up with, its bits above depth left out.
    [[nodiscard]] std::uint32_t value(std::size_t at) const {
        return kind == PictureKind::grey8 ? bytes[0][at] : words[at] & (valueCount() - 1);
    }
    [[nodiscard]] bool isHidden(std::size_t at) const { return mask && mask[at] == 0; }
};

// The file's value or values of a pixel, alpha the last, with the unit of the scale, and whether it is
// hidden; (x, y) lies in the picture.
[[nodiscard]] std::wstring valueText(const Picture& picture, long x, long y);
[[nodiscard]] std::wstring kindText(const Picture& picture);

// Smallest and largest visible value of a grey or range picture; where they are the same, or all are hidden,
// the next one or the whole depth, so that low is below high.
[[nodiscard]] Limits dataLimits(const Picture& picture);

} // namespace talview
