// Layers and the engine's requests to redraw them.
#include "viewer/scene/scene.h"

#include "viewer/view/failure.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace talview {
namespace {

// Markers come last and together: an engine that blends them by Direct3D reads its whole surface back before
// the next image.
enum Layer : long { imageLayer, markerLayer, layerCount };

constexpr COLORREF backgroundColor = RGB(40, 44, 52);

int screenCapability(HWND window, int index) {
    const HDC dc = GetDC(window);
    const int answer = GetDeviceCaps(dc, index);
    ReleaseDC(window, dc);
    return answer;
}

talxrend::ComPtr<ITalRenderEngine2> createEngine(bool directDraw) {
    return talxrend::create<ITalRenderEngine2>(
        directDraw ? __uuidof(TalRenderEngine) : __uuidof(TalGDIRenderEngine), notRegistered("talxrend.dll"));
}

} // namespace

Scene::Scene(HWND window, const Options& options, std::optional<Image> image)
    : window_(window), options_(options), image_(std::move(image)),
      placement_(image_ ? image_->picture().width : 1, image_ ? image_->picture().height : 1, options.scale,
                 options.at),
      screenBits_(screenCapability(window, BITSPIXEL) * screenCapability(window, PLANES)),
      palettised_((screenCapability(window, RASTERCAPS) & RC_PALETTE) != 0), marker_(palettised_),
      engine_(createEngine(options.directDraw), window, layerCount,
              [this](long layer, const RECT& rect) { drawLayer(layer, rect); }) {
    setExtent();
    engine_.check(engine_->put_VisiblePixelMaskEnable(VARIANT_TRUE), "VisiblePixelMaskEnable");
    engine_.check(engine_->put_VisiblePixelMaskColor(options.maskColor), "VisiblePixelMaskColor");
    setMethod();
    setColorMap();
}

void Scene::setExtent() {
    const RECT view = engine_.extent();
    width_ = view.right;
    height_ = view.bottom;
    placement_.resize(width_, height_);
}

bool Scene::compose() {
    if (!std::exchange(isChanged_, false)) {
        return false;
    }
    engine_.update(extent());
    return true;
}

void Scene::changed() {
    isChanged_ = true;
    InvalidateRect(window_, nullptr, FALSE);
}

void Scene::drawLayer(long layer, const RECT& rect) {
    switch (layer) {
    case imageLayer:
        return drawImage(rect);
    case markerLayer:
        return drawMarkers(rect);
    }
}

void Scene::drawImage(const RECT& rect) {
    engine_.fill(imageLayer, rect, backgroundColor);
    if (!image_) {
        return;
    }
    engine_.drawImage(imageLayer, image_->object(), {placement_.left(), placement_.top()}, placement_.scale(),
                      rect);
}

void Scene::drawMarkers(const RECT& rect) {
    constexpr long half = Marker::size / 2; // beside the middle pixel
    for (const Point& place : options_.markers) {
        const Point middle = placement_.toView({place.x + 0.5, place.y + 0.5});
        engine_.drawIcon(markerLayer, marker_.icon(), marker_.colors(), marker_.transparencies(),
                         std::floor(middle.x) - half, std::floor(middle.y) - half, 1, rect);
    }
}

void Scene::setMethod() {
    engine_.putScalingMethod(options_.centre ? talRenderEngineScalingMethodBilinearInterpolation
                                             : talRenderEngineScalingMethodNoInterpolation);
}

void Scene::setColorMap() {
    if (!image_ || !image_->picture().hasMap()) {
        return;
    }
    const std::uint32_t count = image_->picture().valueCount();
    limits_ = options_.limits.value_or(Limits{0, count - 1.0});
    if (options_.autoLimits) {
        limits_ = dataLimits(image_->picture());
    }
    const auto colors = colorTable(*options_.map, count, limits_.low, limits_.high);
    switch (image_->picture().kind) {
    case PictureKind::grey8:
        return engine_.put8GreyMap(colors);
    case PictureKind::grey16:
        return engine_.put16GreyMap(colors);
    case PictureKind::range16:
        return engine_.put16RangeMap(colors);
    case PictureKind::color:
        break;
    }
}

void Scene::setImage(Image image, bool keepMarkers) {
    image_ = std::move(image);
    placement_.setImage(image_->picture().width, image_->picture().height);
    if (!keepMarkers) {
        options_.markers.clear();
    }
    setColorMap();
    changed();
}

void Scene::resize() {
    if (engine_.resize()) {
        setExtent();
        changed();
    }
}

void Scene::paletteChanged() {
    engine_.check(engine_->PaletteChange(), "PaletteChange");
    changed();
}

void Scene::fit() {
    placement_.fit();
    changed();
}

void Scene::zoomAbout(POINT view, double factor) {
    placement_.zoomAbout({static_cast<double>(view.x), static_cast<double>(view.y)}, factor);
    changed();
}

void Scene::zoomTo(POINT view, double scale) {
    placement_.zoomTo({static_cast<double>(view.x), static_cast<double>(view.y)}, scale);
    changed();
}

void Scene::move(long dx, long dy) {
    placement_.move({static_cast<double>(dx), static_cast<double>(dy)});
    changed();
}

void Scene::nextMap() {
    const auto& maps = colorMaps();
    options_.map = options_.map == &maps.back() ? maps.data() : options_.map + 1;
    setColorMap();
    changed();
}

void Scene::nextMethod() {
    options_.centre = !options_.centre;
    setMethod();
    changed();
}

} // namespace talview
