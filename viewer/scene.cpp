// Layers and the engine's requests to redraw them.
#include "viewer/scene.h"

#include "viewer/failure.h"

#include <algorithm>
#include <cmath>
#include <cwchar>
#include <utility>

namespace talview {
namespace {

// Markers come last and together: an engine that blends them by Direct3D reads its whole surface back before
// the next image or text.
enum Layer : long { imageLayer, captionLayer, markerLayer, layerCount };

constexpr COLORREF backgroundColor = RGB(40, 44, 52);
constexpr COLORREF captionColor = RGB(0, 0, 0);
constexpr COLORREF captionTextColor = RGB(255, 255, 255);
constexpr long captionHeight = 20;

bool isScreenPalettised(HWND window) {
    const HDC dc = GetDC(window);
    const bool palettised = (GetDeviceCaps(dc, RASTERCAPS) & RC_PALETTE) != 0;
    ReleaseDC(window, dc);
    return palettised;
}

talxrend::ComPtr<ITalRenderEngine2> createEngine(bool directDraw) {
    return talxrend::create<ITalRenderEngine2>(
        directDraw ? __uuidof(TalRenderEngine) : __uuidof(TalGDIRenderEngine), notRegistered("talxrend.dll"));
}

} // namespace

Scene::Scene(HWND window, const Options& options, Image image)
    : window_(window), options_(options), image_(std::move(image)),
      placement_(image_.width(), image_.height(), options.scale, options.at),
      palettised_(isScreenPalettised(window)), marker_(palettised_),
      engine_(createEngine(options.directDraw), window, layerCount,
              [this](long layer, const RECT& rect) { drawLayer(layer, rect); }) {
    setExtent();
    engine_.check(engine_->put_VisiblePixelMaskEnable(VARIANT_TRUE), "VisiblePixelMaskEnable");
    engine_.check(engine_->put_VisiblePixelMaskColor(options.maskColor), "VisiblePixelMaskColor");
    setMethod();
    setColorMap();
    updateAll();
}

void Scene::setExtent() {
    const RECT view = engine_.extent();
    width_ = view.right;
    height_ = view.bottom;
    placement_.resize(width_, height_);
}

void Scene::updateLayer(long layer, const RECT& rect) {
    engine_.update(layer, rect);
    engine_.show(rect);
}

void Scene::drawLayer(long layer, const RECT& rect) {
    switch (layer) {
    case imageLayer:
        return drawImage(rect);
    case captionLayer:
        return drawCaption(rect);
    case markerLayer:
        return drawMarkers(rect);
    }
}

void Scene::drawImage(const RECT& rect) {
    engine_.fill(imageLayer, rect, backgroundColor);
    engine_.drawImage(imageLayer, image_.object(), {placement_.left(), placement_.top()}, placement_.scale(),
                      rect);
}

void Scene::drawCaption(const RECT& rect) {
    RECT strip = captionRect();
    RECT visible;
    if (!options_.caption || !IntersectRect(&visible, &strip, &rect)) {
        return;
    }
    const talxrend::GdiOwner<HBRUSH> brush(CreateSolidBrush(captionColor));
    const talxrend::GdiOwner<HFONT> font(CreateFontW(-13, 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                                                     DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                                     NONANTIALIASED_QUALITY, DEFAULT_PITCH, L"Tahoma"));
    talxrend::DrawContext dc(engine_, captionLayer, visible);
    FillRect(dc, &strip, brush.get());
    SelectObject(dc, font.get());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, captionTextColor);
    InflateRect(&strip, -4, 0);
    DrawTextW(dc, captionText().c_str(), -1, &strip,
              DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX);
    dc.end();
}

void Scene::drawMarkers(const RECT& rect) {
    constexpr long half = Marker::size / 2; // beside the middle pixel
    for (const Point& place : options_.markers) {
        const Point middle = placement_.toView({place.x + 0.5, place.y + 0.5});
        engine_.drawIcon(markerLayer, marker_.icon(), marker_.colors(), marker_.transparencies(),
                         std::floor(middle.x) - half, std::floor(middle.y) - half, 1, rect);
    }
}

RECT Scene::captionRect() const {
    return {0, std::max(0L, height_ - captionHeight), width_, height_};
}

std::wstring Scene::captionText() const {
    wchar_t scale[32];
    std::swprintf(scale, ARRAYSIZE(scale), L"%.4g", placement_.scale() * 100);
    std::wstring text = options_.image.substr(options_.image.find_last_of(L"\\/") + 1) + L"   " +
                        std::to_wstring(image_.width()) + L"\u00D7" + std::to_wstring(image_.height()) +
                        L" " + image_.kindText() + L"   " + scale + L" %";
    text += options_.centre ? L" centre" : L" nearest";
    if (palettised_ && image_.kind() != ImageKind::grey8) {
        text += L"   (a 256-colour screen shows 8-bit grey images only)";
    } else if (image_.kind() != ImageKind::color) {
        text += std::wstring(L"   ") + options_.map->name;
    }
    return text + L"   " + valueText_;
}

void Scene::setMethod() {
    engine_.putScalingMethod(options_.centre ? talRenderEngineScalingMethodBilinearInterpolation
                                             : talRenderEngineScalingMethodNoInterpolation);
}

void Scene::setColorMap() {
    if (image_.kind() == ImageKind::color) {
        return;
    }
    const std::uint32_t count = image_.valueCount();
    Limits limits = options_.limits.value_or(Limits{0, count - 1.0});
    if (options_.autoLimits) {
        const auto [low, high] = image_.valueLimits();
        limits = {static_cast<double>(low), static_cast<double>(std::max(high, low + 1))};
    }
    const auto colors = colorTable(*options_.map, count, limits.low, limits.high);
    switch (image_.kind()) {
    case ImageKind::grey8:
        return engine_.put8GreyMap(colors);
    case ImageKind::grey16:
        return engine_.put16GreyMap(colors);
    case ImageKind::range16:
        return engine_.put16RangeMap(colors);
    case ImageKind::color:
        break;
    }
}

void Scene::resize() {
    if (engine_.resize()) {
        setExtent();
        updateAll();
    }
}

void Scene::paletteChanged() {
    engine_.check(engine_->PaletteChange(), "PaletteChange");
    updateAll();
}

void Scene::fit() {
    placement_.fit();
    updateAll();
}

void Scene::zoomAbout(POINT view, double factor) {
    placement_.zoomAbout({static_cast<double>(view.x), static_cast<double>(view.y)}, factor);
    updateAll();
}

void Scene::move(long dx, long dy) {
    placement_.move({static_cast<double>(dx), static_cast<double>(dy)});
    updateAll();
}

void Scene::nextMap() {
    const auto& maps = colorMaps();
    options_.map = options_.map == &maps.back() ? maps.data() : options_.map + 1;
    setColorMap();
    updateAll();
}

void Scene::nextMethod() {
    options_.centre = !options_.centre;
    setMethod();
    updateAll();
}

void Scene::pointAt(POINT view) {
    const Point place = placement_.toImage({view.x + 0.5, view.y + 0.5});
    std::wstring text;
    if (place.x >= 0 && place.x < image_.width() && place.y >= 0 && place.y < image_.height()) {
        const long x = static_cast<long>(place.x);
        const long y = static_cast<long>(place.y);
        text = L"(" + std::to_wstring(x) + L", " + std::to_wstring(y) + L") = " + image_.valueText(x, y);
    }
    // A picture that is saved or taken from the screen shall not depend on where the mouse happens to be.
    if (text != valueText_ && options_.interactive()) {
        valueText_ = text;
        SetWindowTextW(window_, (options_.image + L"   " + text + L" - talview").c_str());
        updateLayer(captionLayer, captionRect());
    }
}

} // namespace talview
