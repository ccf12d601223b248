// The texts of the status line's fields.
#include "viewer/status_text.h"

#include <cwchar>

namespace talview {
namespace {

template <class... Values>
std::wstring format(const wchar_t* pattern, Values... values) {
    wchar_t text[64];
    std::swprintf(text, ARRAYSIZE(text), pattern, values...);
    return text;
}

std::wstring contrastText(const View& view) {
    const Coloring& coloring = view.coloring();
    return coloring.map->name + std::wstring(L" ") + limitsText(view.picture()->scale, coloring.limits) +
           (coloring.flags == Flags::on ? L", flags" : L"");
}

} // namespace

std::wstring valueAt(const View& view, POINT at) {
    const auto pixel = view.pixelAt(at.x, at.y);
    return pixel
               ? format(L"(%ld, %ld) = ", pixel->x, pixel->y) + valueText(*view.picture(), pixel->x, pixel->y)
               : L"";
}

std::vector<std::wstring> statusTexts(const Scene& scene, const StatusFacts& facts) {
    const View& view = scene.view();
    const Picture* picture = view.picture();
    if (!picture) {
        return {};
    }
    const double percents = view.placement().scale() * 100;
    return {
        facts.pointer ? valueAt(view, *facts.pointer) : L"",
        format(L"%ld\u00D7%ld ", picture->width, picture->height) + kindText(*picture) +
            (facts.frames > 1 ? format(L", %u of %u", facts.frame + 1, facts.frames) : L"") +
            (facts.isIncomplete ? L", incomplete" : L"") +
            (scene.isReduced() ? L": not shown in 256 colours" : L""),
        format(percents < 1000 ? L"%.4g %%" : L"%.0f %%", percents) +
            (view.isCentre() ? L" centre" : L" nearest"),
        picture->hasMap() ? contrastText(view) : L"",
        (scene.isDirectDraw() ? L"DirectDraw" : L"GDI") + format(L", %d-bit screen", scene.screenBits()),
        facts.milliseconds ? format(L"%.1f ms", *facts.milliseconds) : L"",
    };
}

} // namespace talview
