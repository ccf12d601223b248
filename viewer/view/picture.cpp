// Values of pictures, as numbers and as text.
#include "viewer/view/picture.h"

#include "viewer/view/pixel_values.h"

#include <algorithm>

namespace talview {
namespace {

// Of all pels, or of those that are not hidden. Whole vectors of pels are compared at once, so nothing but
// the pel's own type may hold what is found, and no pel may decide what is done.
template <class Pel>
std::pair<std::uint32_t, std::uint32_t> extremes(const Picture& picture, const Block<Pel>& pels) {
    const Pel bits = static_cast<Pel>(picture.valueCount() - 1);
    const Pel* const from = pels.data();
    const std::uint8_t* const mask = picture.mask.data();
    Pel low = bits;
    Pel high = 0;
    if (picture.mask) {
        for (std::size_t i = 0; i < pels.size(); ++i) {
            const Pel shown = mask[i] == 0 ? 0 : bits;
            low = std::min<Pel>(low, (from[i] & shown) | (bits & ~shown));
            high = std::max<Pel>(high, from[i] & shown);
        }
    } else {
        for (std::size_t i = 0; i < pels.size(); ++i) {
            low = std::min<Pel>(low, from[i] & bits);
            high = std::max<Pel>(high, from[i] & bits);
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
