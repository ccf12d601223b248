// The owner of a render engine: it numbers the layers, draws them, and redraws them when the engine asks.
//
// Layer 0 is the background with the image, layer 1 the markers.
#pragma once

#include "viewer/files/image.h"
#include "viewer/scene/marker.h"
#include "viewer/view/options.h"
#include "viewer/view/placement.h"

#include <talxrend.hpp>

#include <optional>

namespace talview {

class Scene {
public:
    // Creates the engine for the window, which must outlive the scene.
    Scene(HWND window, const Options& options, std::optional<Image> image);
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    [[nodiscard]] const talxrend::Engine& engine() const { return engine_; }
    // The whole view.
    [[nodiscard]] RECT extent() const { return {0, 0, width_, height_}; }

    // Draws everything anew if something has changed since the last time, and says whether it had.
    bool compose();
    // Copies a rectangle of the composed picture to the screen or to the engine's render target.
    void refresh(const RECT& rect) const { engine_.show(rect); }

    [[nodiscard]] const Options& options() const { return options_; }
    [[nodiscard]] const std::optional<Image>& image() const { return image_; }
    [[nodiscard]] const Placement& placement() const { return placement_; }
    // The image values that have the map's first and last colour.
    [[nodiscard]] Limits limits() const { return limits_; }
    // Bits of a pixel of the screen.
    [[nodiscard]] int screenBits() const { return screenBits_; }
    // The screen has 256 colours, so that this image is not shown in its own.
    [[nodiscard]] bool isReduced() const {
        return palettised_ && image_ && image_->picture().kind != PictureKind::grey8;
    }

    // Each of these asks the system for a repaint of the window, and leaves the drawing to compose.
    // keepMarkers: it is the same one, read again.
    void setImage(Image image, bool keepMarkers);
    void resize(); // the window has another size
    void paletteChanged();
    void fit();
    void zoomAbout(POINT view, double factor);
    void zoomTo(POINT view, double scale);
    void move(long dx, long dy);
    void nextMap();
    void nextMethod();

private:
    void drawLayer(long layer, const RECT& rect);
    void drawImage(const RECT& rect);
    void drawMarkers(const RECT& rect);

    void changed();
    void setExtent();
    void setMethod();
    void setColorMap();

    HWND window_;
    Options options_;
    std::optional<Image> image_;
    Placement placement_;
    int screenBits_;
    bool palettised_; // the screen has 256 colours
    Marker marker_;
    talxrend::Engine engine_;
    long width_ = 0;
    long height_ = 0;
    Limits limits_;
    bool isChanged_ = true;
};

} // namespace talview
