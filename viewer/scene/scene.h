// The owner of a render engine: it numbers the layers, draws them, and redraws them when the engine asks.
//
// Layer 0 is the background with the image, layer 1 the overlays, layer 2 the markers.
#pragma once

#include "viewer/scene/marker.h"
#include "viewer/scene/overlays.h"
#include "viewer/scene/screen.h"
#include "viewer/view/view.h"

#include <talxrend.hpp>

#include <optional>
#include <utility>
#include <vector>

namespace talview {

class Scene {
public:
    // Creates the engine for the window. Window and view must outlive the scene. Throws talxrend::Failure.
    Scene(HWND window, View& view, bool directDraw);
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    [[nodiscard]] const talxrend::Engine& engine() const { return engine_; }
    [[nodiscard]] View& view() const { return view_; }
    [[nodiscard]] bool isDirectDraw() const { return !engine_.targets(); }
    // The whole view.
    [[nodiscard]] RECT extent() const { return rectOf(view_.extent()); }
    // Bits of a pixel of the screen.
    [[nodiscard]] int screenBits() const { return screen_.bits; }
    // The screen has 256 colours, so that the picture is not shown in its own.
    [[nodiscard]] bool isReduced() const {
        return screen_.isPalettised && view_.picture() && view_.picture()->kind != PictureKind::grey8;
    }

    // The image object of the view's picture; null: none.
    void setImage(talxrend::ComPtr<ITalImage> image);
    // Gives engine and view the size of the window; both stay as they are while it has none.
    void resize();
    void paletteChanged();
    // The window is on a monitor of another resolution now.
    void setDpi(UINT dpi);

    // These throw talxrend::Failure; rectangles are in pixels of the view.

    // Draws what of the view is damaged, for the screen or for a render target.
    void compose();
    // The parts of the view that are not on the screen as they were composed since this was asked last.
    [[nodiscard]] std::vector<RECT> takeComposed() { return std::exchange(composed_, {}); }
    // Copies a rectangle of the composed picture to the screen or to the engine's render target.
    void refresh(const RECT& rect) const { engine_.show(rect); }

    // Draws the view without overlays and markers, or with them.
    void showOverlays(bool shown);

    [[nodiscard]] static RECT rectOf(const Box& box) { return {box.left, box.top, box.right, box.bottom}; }

private:
    void drawLayer(long layer, const RECT& rect);
    void drawImage(const RECT& rect);
    void drawMarkers(const RECT& rect);

    void applyColoring();
    void applyMasking();
    void applyMethod();
    void moveDrawn(long dx, long dy) const;
    [[nodiscard]] OverlayScene overlayScene() const;
    [[nodiscard]] RECT redrawn(const Box& box) const;
    [[nodiscard]] RECT imageRect() const;

    View& view_;
    talxrend::ComPtr<ITalImage> image_;
    ScreenFacts screen_;
    bool overlaysShown_ = true;
    Marker marker_;
    Overlays overlays_;
    talxrend::Engine engine_;

    // What the engine has been given, or has drawn.
    const Picture* coloredPicture_ = nullptr;
    Coloring coloring_;
    std::optional<Masking> masking_;
    bool isCentre_ = false;
    OverlayState overlayState_;
    std::vector<Box> pinned_;
    std::vector<RECT> composed_;
};

} // namespace talview
