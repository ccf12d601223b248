// The owner of a render engine: it numbers the layers, draws them, and redraws them when the engine asks.
//
// Layer 0 is the background with the image, layer 1 the line of text, layer 2 the markers.
#pragma once

#include "viewer/image.h"
#include "viewer/marker.h"
#include "viewer/options.h"
#include "viewer/placement.h"

#include <talxrend.hpp>

namespace talview {

class Scene {
public:
    // Creates the engine for the window and composes the first picture. The window must outlive the scene.
    Scene(HWND window, const Options& options, Image image);
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    [[nodiscard]] const talxrend::Engine& engine() const { return engine_; }
    // The whole view.
    [[nodiscard]] RECT extent() const { return {0, 0, width_, height_}; }

    // Copies a rectangle of the composed picture to the screen or to the engine's render target.
    void refresh(const RECT& rect) const { engine_.show(rect); }

    // The window has another size.
    void resize();
    void paletteChanged();

    void fit();
    void zoomAbout(POINT view, double factor);
    void move(long dx, long dy);
    void nextMap();
    void nextMethod();
    // Shows the image value there.
    void pointAt(POINT view);

private:
    void drawLayer(long layer, const RECT& rect);
    void drawImage(const RECT& rect);
    void drawCaption(const RECT& rect);
    void drawMarkers(const RECT& rect);

    // Redraws a layer in a rectangle, the engine asking for all other layers, and shows the result.
    void updateLayer(long layer, const RECT& rect);
    void updateAll() { updateLayer(0, extent()); }

    void setExtent();
    void setMethod();
    void setColorMap();
    [[nodiscard]] std::wstring captionText() const;
    [[nodiscard]] RECT captionRect() const;

    HWND window_;
    Options options_;
    Image image_;
    Placement placement_;
    bool palettised_; // the screen has 256 colours
    Marker marker_;
    std::wstring valueText_;
    talxrend::Engine engine_;
    long width_ = 0;
    long height_ = 0;
};

} // namespace talview
