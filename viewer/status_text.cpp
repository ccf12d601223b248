// The texts of the status line's fields.
#include "viewer/status_text.h"

#include <cmath>
#include <cwchar>

namespace talview {
namespace {

template <class... Values>
std::wstring format(const wchar_t* pattern, Values... values) {
    wchar_t text[64];
    std::swprintf(text, ARRAYSIZE(text), pattern, values...);
    return text;
}

std::wstring valueAt(const Scene& scene, POINT view) {
    const Picture& image = scene.image()->picture();
    const Point place = scene.placement().toImage({view.x + 0.5, view.y + 0.5});
    if (place.x < 0 || place.x >= image.width || place.y < 0 || place.y >= image.height) {
        return L"";
    }
    const long x = static_cast<long>(place.x);
    const long y = static_cast<long>(place.y);
    return format(L"(%ld, %ld) = ", x, y) + valueText(image, x, y);
}

} // namespace

std::vector<std::wstring> statusTexts(const Scene& scene, std::optional<POINT> pointer,
                                      std::optional<double> milliseconds) {
    if (!scene.image()) {
        return {L"No picture: Ctrl+O opens one"};
    }
    const Options& options = scene.options();
    const Picture& image = scene.image()->picture();
    const bool isColor = !image.hasMap();
    const Limits limits = scene.limits();
    return {
        pointer ? valueAt(scene, *pointer) : L"",
        format(L"%ld\u00D7%ld ", image.width, image.height) + kindText(image),
        format(L"%.4g %%", scene.placement().scale() * 100) + (options.centre ? L" centre" : L" nearest"),
        isColor ? L"" : options.map->name + format(L" %g to %g", limits.low, limits.high),
        (options.directDraw ? L"DirectDraw" : L"GDI") + format(L", %d-bit screen", scene.screenBits()) +
            (scene.isReduced() ? L", 8-bit grey only" : L""),
        milliseconds ? format(L"%.1f ms", *milliseconds) : L"",
    };
}

} // namespace talview
