// Values of pictures, as numbers and as text.
#include "viewer/view/picture.h"

#include <algorithm>
#include <cmath>
#include <cwchar>

namespace talview {
namespace {

template <class Pel>
std::pair<std::uint32_t, std::uint32_t> extremes(const Picture& picture, const Block<Pel>& pels) {
    const std::uint32_t bits = picture.valueCount() - 1;
    std::uint32_t low = bits;
    std::uint32_t high = 0;
    for (std::size_t i = 0; i < pels.size(); ++i) {
        if (!picture.isHidden(i)) {
            low = std::min(low, pels[i] & bits);
            high = std::max(high, pels[i] & bits);
        }
    }
    return {low, high};
}

} // namespace

std::wstring numberText(double number) {
    const bool isWhole = number == std::floor(number) && std::abs(number) < 1e9;
    wchar_t text[32];
    std::swprintf(text, std::size(text), isWhole ? L"%.0f" : L"%.5g", number);
    return text;
}

std::wstring valueText(const Picture& picture, long x, long y) {
    const std::size_t at = picture.at(x, y);
    std::wstring text;
    const auto add = [&](double value) {
        text += (text.empty() ? L"" : L" ") + numberText(value);
    };
    if (picture.channels > 0) {
        for (int channel = 0; channel < picture.channels; ++channel) {
            const std::size_t index = at * picture.channels + channel;
            add(picture.real ? picture.real[index] : picture.deep[index]);
        }
        return text;
    }
    if (picture.kind == PictureKind::color) {
        for (const auto& plane : picture.bytes) {
            add(plane[at]);
        }
        return text;
    }
    add(picture.scale.of(picture.kind == PictureKind::grey8 ? picture.bytes[0][at] : picture.words[at]));
    return text + (picture.scale.unit.empty() ? L"" : L" ") + picture.scale.unit +
           (picture.isHidden(at) ? L" (hidden)" : L"");
}

std::wstring kindText(const Picture& picture) {
    switch (picture.kind) {
    case PictureKind::grey8:
        return L"8-bit grey";
    case PictureKind::grey16:
        return picture.real ? L"floating-point grey" : std::to_wstring(picture.depth) + L"-bit grey";
    case PictureKind::range16:
        return picture.mask ? L"range with mask" : L"range";
    case PictureKind::color:
        break;
    }
    const std::wstring alpha = picture.channels == 4 ? L" with alpha" : L"";
    return (picture.real          ? L"floating-point colour"
            : picture.depth == 16 ? L"16-bit colour"
                                  : L"colour") +
           alpha;
}

Limits dataLimits(const Picture& picture) {
    auto [low, high] = picture.kind == PictureKind::grey8 ? extremes(picture, picture.bytes[0])
                                                          : extremes(picture, picture.words);
    if (low > high) {
        return {0, picture.valueCount() - 1.0};
    }
    if (low == high) {
        low = low == picture.valueCount() - 1 ? low - 1 : low;
        high = low + 1;
    }
    return {static_cast<double>(low), static_cast<double>(high)};
}

} // namespace talview
