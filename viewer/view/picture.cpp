// Values of pictures, as numbers and as text.
#include "viewer/view/picture.h"

#include "viewer/view/pixel_values.h"

#include <algorithm>

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

std::wstring valueText(const Picture& picture, long x, long y) {
    std::wstring text;
    for (const std::wstring& each : PixelValues(picture, x, y).texts()) {
        text += (text.empty() ? L"" : L" ") + each;
    }
    const std::wstring& unit = picture.hasMap() ? picture.scale.unit : L"";
    return text + (unit.empty() ? L"" : L" ") + unit +
           (picture.isHidden(picture.at(x, y)) ? L" (hidden)" : L"");
}

std::wstring kindText(const Picture& picture) {
    const bool isPoint =
        picture.real && picture.sample != Sample::whole && picture.sample != Sample::signedWhole;
    const wchar_t* const point = picture.sample == Sample::real ? L"floating-point" : L"fixed-point";
    switch (picture.kind) {
    case PictureKind::grey8:
        return L"8-bit grey";
    case PictureKind::grey16:
        return (isPoint ? point : std::to_wstring(picture.real ? 32 : picture.depth) + L"-bit") + L" grey";
    case PictureKind::range16:
        return picture.mask ? L"range with mask" : L"range";
    case PictureKind::color:
        break;
    }
    return (isPoint               ? point + std::wstring(L" ")
            : picture.depth == 16 ? L"16-bit "
                                  : L"") +
           (picture.channels == 4 ? L"colour with alpha" : L"colour");
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
