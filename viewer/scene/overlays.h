// What lies over the image in a layer of its own: what is on, and drawing it.
//
// Drawing a part of the view gives the pixels there that drawing all of it would give. The grid, the values
// and the line move with the image; bar, histogram, plot and help stay where they are in the view.
#pragma once

#include "viewer/scene/overlay_help.h"
#include "viewer/scene/overlay_paint.h"
#include "viewer/view/color_maps.h"
#include "viewer/view/histogram.h"
#include "viewer/view/overlay_state.h"
#include "viewer/view/picture.h"
#include "viewer/view/placement.h"

#include <talxrend.hpp>

#include <optional>
#include <vector>

namespace talview {

// What the overlays are of.
struct OverlayScene {
    const Picture* picture = nullptr; // null: there is none
    const OverlayState& shown;
    const Placement& placement;
    bool isCentre; // the sampling method
    const ColorMap& map;
    Limits limits;
    Flags flags = Flags::off;
    SIZE view{};   // in pixels
    UINT dpi = 96; // of the screen that shows it
};

class Overlays {
public:
    // To be called when the scene has another picture, or the same one has other values: its histogram was
    // kept.
    void pictureChanged() { counts_.reset(); }

    // Draws what is on and touches a rectangle of the view, clipped to it. The first drawing of a histogram
    // goes through the whole picture.
    void draw(const talxrend::Engine& engine, long layer, const RECT& rect, const OverlayScene& scene);

    // What stays in place when the image moves.
    [[nodiscard]] std::vector<Box> pinned(const OverlayScene& scene);

private:
    // Places in the view of what is on; nothing (empty) of what is not.
    struct Places {
        RECT bar{};
        RECT histogram{};
        RECT profile{};
        RECT help{};
        RECT message{};
        RECT line{};
    };

    [[nodiscard]] const OverlayFont& font(UINT dpi);
    // The largest one, up to that, with which the page fits the view.
    [[nodiscard]] const OverlayFont& helpFont(const OverlayScene& scene);
    [[nodiscard]] Places places(const OverlayScene& scene);
    void drawByGdi(HDC dc, const RECT& rect, const OverlayScene& scene, const Places& at);
    static void drawGrid(const talxrend::Engine& engine, long layer, const RECT& rect,
                         const OverlayScene& scene);
    void drawTexts(HDC dc, const RECT& rect, const OverlayScene& scene);
    void drawHistogram(HDC dc, const RECT& place, const OverlayScene& scene);
    [[nodiscard]] static bool hasTexts(const OverlayScene& scene);

    UINT dpi_ = 0; // of font_
    std::optional<OverlayFont> font_;
    std::optional<OverlayFont> helpFont_;
    SIZE helpView_{}; // that helpFont_ was made for
    UINT helpDpi_ = 0;
    std::optional<OverlayFont> textFont_; // in the pixels
    long textHeight_ = 0;                 // that textFont_ was made for
    std::optional<ValueCounts> counts_;
};

} // namespace talview
