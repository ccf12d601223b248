// Layers and the engine's requests to redraw them.
#include "viewer/scene/scene.h"

#include "viewer/view/failure.h"

#include <cstdlib>
#include <utility>

namespace talview {
namespace {

// Markers come last and together: an engine that blends them by Direct3D reads its whole surface back before
// the next image.
enum Layer : long { imageLayer, overlayLayer, markerLayer, layerCount };

constexpr COLORREF backgroundColor = RGB(40, 44, 52);

talxrend::ComPtr<ITalRenderEngine2> createEngine(bool directDraw) {
    return talxrend::create<ITalRenderEngine2>(
        directDraw ? __uuidof(TalRenderEngine) : __uuidof(TalGDIRenderEngine), notRegistered("talxrend.dll"));
}

// What is begun and fails leaves nothing of the view as it should be.
class RedrawUnlessDone {
public:
    explicit RedrawUnlessDone(Damage& damage) : damage_(&damage) {}
    ~RedrawUnlessDone() {
        if (damage_) {
            damage_->addAll();
        }
    }
    RedrawUnlessDone(const RedrawUnlessDone&) = delete;
    RedrawUnlessDone& operator=(const RedrawUnlessDone&) = delete;
    void done() { damage_ = nullptr; }

private:
    Damage* damage_;
};

} // namespace

Scene::Scene(HWND window, View& view, bool directDraw)
    : view_(view), screen_(screenOf(window)), marker_(screen_.isPalettised),
      engine_(createEngine(directDraw), window, layerCount,
              [this](long layer, const RECT& rect) { drawLayer(layer, rect); }) {
    const RECT extent = engine_.extent();
    view_.resize(extent.right, extent.bottom);
}

void Scene::setImage(talxrend::ComPtr<ITalImage> image) {
    image_ = std::move(image);
    coloredPicture_ = nullptr; // another may have come to lie at its address
    overlays_.pictureChanged();
}

void Scene::resize() {
    if (engine_.resize()) {
        const RECT extent = engine_.extent();
        view_.resize(extent.right, extent.bottom);
    }
}

void Scene::setDpi(UINT dpi) {
    screen_.dpi = dpi;
    view_.damage().addAll();
}

void Scene::paletteChanged() {
    engine_.check(engine_->PaletteChange(), "PaletteChange");
    view_.damage().addAll();
}

void Scene::showOverlays(bool shown) {
    if (std::exchange(overlaysShown_, shown) != shown) {
        view_.damage().addAll();
    }
}

void Scene::compose() {
    Damage& damage = view_.damage();
    const std::vector<Box> pinned = overlays_.pinned(overlayScene());
    if (view_.overlays() != overlayState_) {
        for (const std::vector<Box>* boxes : {&std::as_const(pinned_), &pinned}) {
            for (const Box& box : *boxes) {
                damage.add(box);
            }
        }
    }
    if (damage.isEmpty()) {
        return;
    }
    applyColoring();
    applyMasking();
    applyMethod();
    const Repair repair = damage.take(pinned_, pinned);
    RedrawUnlessDone redraw(damage);
    overlayState_ = view_.overlays();
    pinned_ = pinned;
    moveDrawn(repair.dx, repair.dy);
    for (const Box& box : repair.boxes) {
        composed_.push_back(redrawn(box));
        engine_.update(composed_.back());
    }
    if (repair.dx != 0 || repair.dy != 0) {
        composed_.assign(1, extent());
    }
    redraw.done();
}

RECT Scene::imageRect() const {
    const Placement& placement = view_.placement();
    return talxrend::coveredBy({placement.imageWidth(), placement.imageHeight()},
                               {placement.left(), placement.top()}, placement.scale());
}

// With the centre-aligned method, what is needed beside a box so that it shows what the whole would.
RECT Scene::redrawn(const Box& box) const {
    const RECT rect = rectOf(box);
    const bool isWhole = !image_ || !view_.isCentre() || view_.placement().scale() == 1;
    return isWhole ? rect : talxrend::alignedPart(rect, imageRect(), extent());
}

void Scene::moveDrawn(long dx, long dy) const {
    if (dx == 0 && dy == 0) {
        return;
    }
    const RECT view = extent();
    talxrend::DrawContext dc(engine_, imageLayer, view);
    const bool isMoved =
        BitBlt(dc, std::max(dx, 0L), std::max(dy, 0L), view.right - std::abs(dx), view.bottom - std::abs(dy),
               dc, std::max(-dx, 0L), std::max(-dy, 0L), SRCCOPY);
    dc.end();
    talxrend::check(isMoved ? S_OK : E_FAIL, "cannot move what is drawn");
}

void Scene::drawLayer(long layer, const RECT& rect) {
    switch (layer) {
    case imageLayer:
        return drawImage(rect);
    case overlayLayer:
        return overlaysShown_ ? overlays_.draw(engine_, overlayLayer, rect, overlayScene()) : void();
    case markerLayer:
        return overlaysShown_ && !view_.overlays().help ? drawMarkers(rect) : void();
    }
}

void Scene::drawImage(const RECT& rect) {
    // The centre-aligned method draws nothing of fewer than three columns or rows, and a screen of 256
    // colours shows 8-bit grey images only.
    RECT covered;
    const RECT place = imageRect();
    IntersectRect(&covered, &rect, &place);
    if (!image_ || isReduced() || view_.isCentre() || !EqualRect(&covered, &rect)) {
        engine_.fill(imageLayer, rect, backgroundColor);
    }
    if (image_) {
        const Placement& placement = view_.placement();
        engine_.drawImage(imageLayer, image_.Get(), {placement.left(), placement.top()}, placement.scale(),
                          rect);
    }
}

void Scene::drawMarkers(const RECT& rect) {
    for (const Point& place : view_.markers()) {
        const RECT box = rectOf(view_.markerBox(place));
        RECT part;
        if (IntersectRect(&part, &box, &rect)) {
            engine_.drawIcon(markerLayer, marker_.icon(), marker_.colors(), marker_.transparencies(),
                             box.left, box.top, 1, rect);
        }
    }
}

OverlayScene Scene::overlayScene() const {
    const Box view = view_.extent();
    const Coloring& coloring = view_.coloring();
    return {.picture = view_.picture(),
            .shown = view_.overlays(),
            .placement = view_.placement(),
            .isCentre = view_.isCentre(),
            .map = *coloring.map,
            .limits = coloring.limits,
            .flags = coloring.flags,
            .view = {view.right, view.bottom},
            .dpi = screen_.dpi};
}

// Each remembers what the engine has been given once that has succeeded.

void Scene::applyColoring() {
    const Picture* picture = view_.picture();
    const Coloring& coloring = view_.coloring();
    if (!picture || !picture->hasMap() || (coloredPicture_ == picture && coloring_ == coloring)) {
        return;
    }
    const auto colors = colorTable(*coloring.map, picture->valueCount(), coloring.limits, coloring.flags);
    switch (picture->kind) {
    case PictureKind::grey8:
        engine_.put8GreyMap(colors);
        break;
    case PictureKind::grey16:
        engine_.put16GreyMap(colors);
        break;
    case PictureKind::range16:
        engine_.put16RangeMap(colors);
        break;
    case PictureKind::color:
        break;
    }
    coloredPicture_ = picture;
    coloring_ = coloring;
}

void Scene::applyMasking() {
    const Masking& masking = view_.masking();
    if (masking_ == masking) {
        return;
    }
    engine_.check(engine_->put_VisiblePixelMaskEnable(masking.isOn ? VARIANT_TRUE : VARIANT_FALSE),
                  "VisiblePixelMaskEnable");
    engine_.check(engine_->put_VisiblePixelMaskColor(masking.color), "VisiblePixelMaskColor");
    masking_ = masking;
}

void Scene::applyMethod() {
    if (isCentre_ == view_.isCentre()) {
        return;
    }
    engine_.putScalingMethod(view_.isCentre() ? talRenderEngineScalingMethodBilinearInterpolation
                                              : talRenderEngineScalingMethodNoInterpolation);
    isCentre_ = view_.isCentre();
}

} // namespace talview
