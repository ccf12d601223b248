// Places, and the order of drawing.
#include "viewer/scene/overlays.h"

#include "viewer/scene/overlay_bar.h"
#include "viewer/scene/overlay_image.h"
#include "viewer/scene/overlay_plots.h"
#include "viewer/view/help.h"
#include "viewer/view/pixel_grid.h"

#include <algorithm>

namespace talview {
namespace {

constexpr COLORREF gridColor = RGB(96, 96, 96);

bool touches(const RECT& a, const RECT& b) {
    RECT common;
    return IntersectRect(&common, &a, &b) != 0;
}

// The values that the histogram is drawn over: all of 8 bits, otherwise from the smallest that occurs to the
// largest.
Limits occurring(const ValueCounts& counts) {
    const auto& values = counts.front();
    if (values.size() <= 256) {
        return {0, values.size() - 1.0};
    }
    const auto occurs = [](std::uint64_t count) {
        return count > 0;
    };
    const auto first = std::find_if(values.begin(), values.end(), occurs);
    const auto last = std::find_if(values.rbegin(), values.rend(), occurs);
    return first == values.end() ? Limits{0, 0}
                                 : Limits{static_cast<double>(first - values.begin()),
                                          static_cast<double>(values.rend() - last - 1)};
}

} // namespace

const OverlayFont& Overlays::font(UINT dpi) {
    if (!font_ || dpi_ != dpi) {
        font_.emplace(dpi);
        dpi_ = dpi;
    }
    return *font_;
}

const OverlayFont& Overlays::helpFont(const OverlayScene& scene) {
    const OverlayFont& largest = font(scene.dpi);
    if (helpFont_ && helpView_.cx == scene.view.cx && helpView_.cy == scene.view.cy && dpi_ == helpDpi_) {
        return *helpFont_;
    }
    constexpr long smallest = 8; // that can be read
    long height = largest.height();
    do {
        helpFont_.emplace(OverlayFont::ofHeight(height));
    } while (--height >= smallest && !HelpPage(helpLines(), *helpFont_).fits(scene.view, scene.dpi));
    helpView_ = scene.view;
    helpDpi_ = scene.dpi;
    return *helpFont_;
}

bool Overlays::hasTexts(const OverlayScene& scene) {
    return scene.shown.grid && scene.picture && scene.placement.scale() > valuesScale;
}

Overlays::Places Overlays::places(const OverlayScene& scene) {
    Places places;
    const OverlayFont& font = this->font(scene.dpi);
    if (scene.shown.help) {
        places.help = HelpPage(helpLines(), helpFont(scene)).place(scene.view, scene.dpi);
    }
    if (!scene.shown.message.empty()) {
        const long height = 2 * font.height();
        places.message = {0, scene.view.cy - height,
                          std::min(scene.view.cx, font.width(scene.shown.message) + height), scene.view.cy};
    }
    if (!scene.picture) {
        return places;
    }
    long left = 0;
    long right = scene.view.cx;
    if (scene.shown.colorBar && scene.picture->hasMap()) {
        places.bar = ColorBar::place(scene.view, scene.dpi, font);
        right = places.bar.left;
    }
    if (scene.shown.histogram) {
        places.histogram = HistogramPlot::place(scene.view, scene.dpi, font);
        left = places.histogram.right;
    }
    if (scene.shown.lineShown()) {
        places.profile = ProfilePlot::place(scene.view, scene.dpi, font, left, right);
        places.line = LineOnImage{*scene.shown.line, scene.placement}.place();
    }
    return places;
}

std::vector<Box> Overlays::pinned(const OverlayScene& scene) {
    const Places at = places(scene);
    std::vector<Box> boxes;
    for (const RECT& rect : {at.bar, at.histogram, at.profile, at.help, at.message}) {
        if (!IsRectEmpty(&rect)) {
            boxes.push_back({rect.left, rect.top, rect.right, rect.bottom});
        }
    }
    return boxes;
}

void Overlays::draw(const talxrend::Engine& engine, long layer, const RECT& rect, const OverlayScene& scene) {
    drawGrid(engine, layer, rect, scene);
    const Places at = places(scene);
    const RECT all[] = {at.line, at.histogram, at.profile, at.bar, at.help, at.message};
    // With DirectDraw a device context is a matter of milliseconds.
    if (!hasTexts(scene) &&
        std::none_of(std::begin(all), std::end(all), [&](const RECT& each) { return touches(each, rect); })) {
        return;
    }
    talxrend::DrawContext dc(engine, layer, rect);
    drawByGdi(dc, rect, scene, at);
    dc.end();
}

void Overlays::drawByGdi(HDC dc, const RECT& rect, const OverlayScene& scene, const Places& at) {
    drawTexts(dc, rect, scene);
    const OverlayFont& font = this->font(scene.dpi);
    const talxrend::Selected selected(dc, font.handle());
    if (touches(at.line, rect)) {
        LineOnImage{*scene.shown.line, scene.placement}.draw(dc, rect);
    }
    if (touches(at.histogram, rect)) {
        drawHistogram(dc, at.histogram, scene);
    }
    if (touches(at.profile, rect)) {
        const Profile profile = profileAlong(*scene.picture, *scene.shown.line);
        ProfilePlot{profile, scene.picture->scale.unit}.draw(dc, at.profile, font);
    }
    if (touches(at.bar, rect)) {
        ColorBar{scene.map, scene.limits, scene.picture->scale, scene.flags}.draw(dc, at.bar, scene.dpi,
                                                                                  font);
    }
    if (touches(at.help, rect)) {
        const talxrend::Selected smaller(dc, helpFont(scene).handle());
        HelpPage(helpLines(), helpFont(scene)).draw(dc, scene.view, scene.dpi);
    }
    if (touches(at.message, rect)) {
        drawPanel(dc, at.message);
        const RECT line{at.message.left + font.height() / 2, at.message.top, at.message.right,
                        at.message.bottom};
        drawLine(dc, line, scene.shown.message, Align::left);
    }
}

void Overlays::drawGrid(const talxrend::Engine& engine, long layer, const RECT& rect,
                        const OverlayScene& scene) {
    const Placement& placement = scene.placement;
    if (!scene.shown.grid || !scene.picture || !(placement.scale() > gridScale)) {
        return;
    }
    const PixelAxis across(placement.left(), scene.picture->width, placement.scale(), scene.isCentre);
    const PixelAxis down(placement.top(), scene.picture->height, placement.scale(), scene.isCentre);
    const RECT covered{placement.left(), placement.top(), across.end(), down.end()};
    RECT part;
    if (!IntersectRect(&part, &rect, &covered)) {
        return;
    }
    for (const long x : across.lines(part.left, part.right)) {
        engine.fill(layer, {x, part.top, x + 1, part.bottom}, gridColor);
    }
    for (const long y : down.lines(part.top, part.bottom)) {
        engine.fill(layer, {part.left, y, part.right, y + 1}, gridColor);
    }
}

void Overlays::drawTexts(HDC dc, const RECT& rect, const OverlayScene& scene) {
    if (!hasTexts(scene)) {
        return;
    }
    const PixelTexts texts{*scene.picture, scene.placement, scene.isCentre,
                           scene.map,      scene.limits,    scene.flags};
    const long height = texts.textHeight(font(scene.dpi));
    if (height == 0) {
        return;
    }
    if (textHeight_ != height) {
        textFont_.emplace(OverlayFont::ofHeight(height));
        textHeight_ = height;
    }
    texts.draw(dc, rect, *textFont_);
}

void Overlays::drawHistogram(HDC dc, const RECT& place, const OverlayScene& scene) {
    if (!counts_) {
        counts_ = countValues(*scene.picture);
    }
    const Histogram counted = histogram(*counts_, occurring(*counts_));
    HistogramPlot{counted, scene.limits, scene.picture->scale}.draw(dc, place, font(scene.dpi));
}

} // namespace talview
