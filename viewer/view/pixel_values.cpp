// Numbers and short texts.
#include "viewer/view/pixel_values.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace talview {
namespace {

constexpr int longestReal = 9;

// What fits of a floating-point number.
std::wstring shortText(double number) {
    std::wstring text = numberText(number);
    for (int digits = 6; text.size() > longestReal && digits > 0; --digits) {
        wchar_t shorter[64];
        std::swprintf(shorter, std::size(shorter), L"%.*g", digits, number);
        text = shorter;
    }
    return text;
}

} // namespace

PixelValues::PixelValues(const Picture& picture, long x, long y)
    : picture_(picture), count_(std::max(static_cast<std::size_t>(picture.channels), countOf(picture))) {
    for (std::size_t i = 0; i < count_; ++i) {
        values_[i] = numberAt(picture.at(x, y), i);
    }
}

double PixelValues::numberAt(std::size_t pel, std::size_t channel) const {
    const std::size_t index = pel * count_ + channel;
    if (!picture_.hasMap()) {
        return picture_.real   ? picture_.real[index]
               : picture_.deep ? picture_.deep[index]
                               : picture_.bytes[channel][pel];
    }
    return picture_.real ? picture_.realScale.of(picture_.real[index])
                         : picture_.scale.of(picture_.kind == PictureKind::grey8 ? picture_.bytes[0][pel]
                                                                                 : picture_.words[pel]);
}

std::vector<std::wstring> PixelValues::texts() const {
    std::vector<std::wstring> texts;
    for (std::size_t i = 0; i < count_; ++i) {
        const bool isScaled = picture_.hasMap() && !picture_.real;
        texts.push_back(isScaled ? numberText(values_[i], picture_.scale) : numberText(values_[i]));
    }
    return texts;
}

int longestValueText(const Picture& picture) {
    if (picture.real) {
        return longestReal;
    }
    if (!picture.hasMap()) {
        return picture.deep ? 5 : 3;
    }
    const auto length = [&](double value) {
        return static_cast<int>(numberText(picture.scale.of(value), picture.scale).size());
    };
    return std::max(length(0), length(picture.kind == PictureKind::grey8 ? 255 : 65535));
}

std::vector<std::wstring> valueTexts(const Picture& picture, long x, long y) {
    if (picture.isHidden(picture.at(x, y))) {
        return {};
    }
    const PixelValues values(picture, x, y);
    std::vector<std::wstring> texts = values.texts();
    texts.resize(PixelValues::countOf(picture));
    for (std::size_t i = 0; picture.real && i < texts.size(); ++i) {
        texts[i] = shortText(values.values()[i]);
    }
    return texts;
}

} // namespace talview
