// The owner of a render engine: it numbers the layers, draws them, and redraws them when the engine asks.
//
// Layer 0 is the background with the image, layer 1 the line of text, layer 2 the markers.
#pragma once

#include "viewer/engine.h"
#include "viewer/image.h"
#include "viewer/marker.h"
#include "viewer/options.h"
#include "viewer/placement.h"

#include <wrl/client.h>

#include <exception>

namespace talview {

class Scene final : private ITalRenderEngineEvents {
public:
    // Creates the engine for the window and composes the first picture. The window must outlive the scene.
    Scene(HWND window, const Options& options, Image image);
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    [[nodiscard]] ITalRenderEngine* engine() const { return engine_.Get(); }
    // The whole view.
    [[nodiscard]] RECT extent() const { return {0, 0, width_, height_}; }

    // Copies a rectangle of the composed picture to the screen or to the engine's render target.
    void refresh(const RECT& rect);

    void resize(long width, long height);
    void paletteChanged();

    void fit();
    void zoomAbout(POINT view, double factor);
    void move(long dx, long dy);
    void nextMap();
    void nextMethod();
    // Shows the image value there.
    void pointAt(POINT view);

private:
    STDMETHOD(QueryInterface)(REFIID iid, void** object) override;
    // The scene lives as long as its engine: nobody counts references to it.
    STDMETHOD_(ULONG, AddRef)() override { return 1; }
    STDMETHOD_(ULONG, Release)() override { return 1; }
    STDMETHOD(InvalidateLayers)(long StartLayer, long EndLayer, long L, long T, long R, long B) override;

    void drawLayer(long layer, const RECT& rect);
    void drawImage(const RECT& rect);
    void drawCaption(const RECT& rect);
    void drawMarkers(const RECT& rect);

    // Redraws a layer in a rectangle, the engine asking for all other layers, and shows the result.
    void updateLayer(long layer, const RECT& rect);
    void updateAll() { updateLayer(0, extent()); }

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
    long width_;
    long height_;
    std::exception_ptr drawFailure_; // from a redraw that the engine asked for
    Microsoft::WRL::ComPtr<ITalRenderEngine2> engine_;
};

} // namespace talview
