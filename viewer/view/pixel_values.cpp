// Numbers and short texts.
#include "viewer/view/pixel_values.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <iterator>

namespace talview {
namespace {

constexpr int longestNumber = 7;

// Whether the numbers are whole ones of a few digits.
bool isPlain(const Picture& picture) {
    return !picture.real && picture.scale.factor == 1 && picture.scale.offset == 0;
}

std::wstring shortText(double number) {
    wchar_t text[64];
    for (int digits = 5;; --digits) {
        const int length = std::swprintf(text, std::size(text), L"%.*g", digits, number);
        if (length <= longestNumber || digits == 1) {
            return text;
        }
    }
}

} // namespace

std::size_t PixelValues::countOf(const Picture& picture) {
    if (picture.channels > 0) {
        return picture.channels < 3 ? 1 : 3;
    }
    return picture.kind == PictureKind::color ? 3 : 1;
}

PixelValues::PixelValues(const Picture& picture, long x, long y) : count_(countOf(picture)) {
    const std::size_t at = picture.at(x, y);
    for (std::size_t i = 0; i < count_; ++i) {
        if (picture.channels > 0) {
            const std::size_t index = at * picture.channels + i;
            values_[i] = picture.real ? picture.real[index] : picture.deep[index];
        } else if (picture.kind == PictureKind::color) {
            values_[i] = picture.bytes[i][at];
        } else {
            values_[i] = picture.scale.of(picture.kind == PictureKind::grey8 ? picture.bytes[0][at]
                                                                             : picture.words[at]);
        }
    }
}

int longestValueText(const Picture& picture) {
    if (!isPlain(picture)) {
        return longestNumber;
    }
    const bool isByte =
        !picture.deep && (picture.kind == PictureKind::grey8 || picture.kind == PictureKind::color);
    return isByte ? 3 : 5;
}

std::vector<std::wstring> valueTexts(const Picture& picture, long x, long y) {
    std::vector<std::wstring> texts;
    if (!picture.isHidden(picture.at(x, y))) {
        for (const double value : PixelValues(picture, x, y).values()) {
            texts.push_back(shortText(value));
        }
    }
    return texts;
}

} // namespace talview
