// The numbers of one pixel as people read them: the file's own where the picture was made from deeper ones,
// otherwise its values; those of grey and range pictures in the unit of the scale.
#pragma once

#include "viewer/view/picture.h"

#include <array>
#include <span>
#include <string>
#include <vector>

namespace talview {

class PixelValues {
public:
    // (x, y) lies in the picture.
    PixelValues(const Picture& picture, long x, long y);

    // One of grey and range pictures, red, green and blue of colour; alpha is left out.
    [[nodiscard]] std::span<const double> values() const { return {values_.data(), countOf(picture_)}; }
    // Alpha too, without unit.
    [[nodiscard]] std::vector<std::wstring> texts() const;

    [[nodiscard]] static std::size_t countOf(const Picture& picture) { return picture.hasMap() ? 1 : 3; }

private:
    [[nodiscard]] double numberAt(std::size_t pel, std::size_t channel) const;

    const Picture& picture_;
    std::size_t count_; // with alpha
    std::array<double, 4> values_{};
};

// The longest text that valueTexts gives for any pixel of the picture, in characters.
[[nodiscard]] int longestValueText(const Picture& picture);
// The numbers of a pixel as texts for a cell of a grid, without unit and alpha, floating-point ones
// shortened; (x, y) lies in the picture. None of a hidden one.
[[nodiscard]] std::vector<std::wstring> valueTexts(const Picture& picture, long x, long y);

} // namespace talview
