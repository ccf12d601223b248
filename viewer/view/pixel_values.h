// The numbers of one pixel as people read them: the file's own where the picture was made from deeper ones,
// otherwise its values in the unit of the scale.
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

    // One of grey and range pictures, red, green and blue of colour; what else the file has is left out.
    [[nodiscard]] std::span<const double> values() const { return {values_.data(), count_}; }

    [[nodiscard]] static std::size_t countOf(const Picture& picture);

private:
    std::array<double, 3> values_{};
    std::size_t count_;
};

// The longest text that valueTexts gives for any pixel of the picture, in characters.
[[nodiscard]] int longestValueText(const Picture& picture);
// The numbers of a pixel as texts that are short enough for a cell of a grid, without unit; (x, y) lies in
// the picture. None of a hidden one.
[[nodiscard]] std::vector<std::wstring> valueTexts(const Picture& picture, long x, long y);

} // namespace talview
