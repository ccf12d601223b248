// What is shown, where and how: the state of the view, without the window that it is in and the engine that
// draws it. Every change notes what has to be drawn again.
#pragma once

#include "viewer/view/color_maps.h"
#include "viewer/view/damage.h"
#include "viewer/view/marker_shape.h"
#include "viewer/view/options.h"
#include "viewer/view/overlay_state.h"
#include "viewer/view/picture.h"
#include "viewer/view/placement.h"

#include <optional>
#include <vector>

namespace talview {

// What the colours of grey and range values are made of.
struct Coloring {
    const ColorMap* map = nullptr;
    Limits limits;
    Flags flags = Flags::off;
    friend bool operator==(const Coloring&, const Coloring&) = default;
};

struct Masking {
    bool isOn = true;
    std::uint32_t color = 0; // 0x00RRGGBB, of hidden values
    friend bool operator==(const Masking&, const Masking&) = default;
};

class View {
public:
    explicit View(const Options& options);

    // The picture must outlive its being shown; the one before must be there still. keepsView: it is the same
    // one read again, or another of its file: its markers, and limits that a person has set, stay.
    void setPicture(const Picture& picture, bool keepsView);
    // The picture that the options were meant for cannot be shown: the next one lies as it would without
    // them.
    void forgetOpening();
    void resize(long width, long height);

    // Null: none yet.
    [[nodiscard]] const Picture* picture() const { return picture_; }
    [[nodiscard]] const Placement& placement() const { return placement_; }
    [[nodiscard]] const Coloring& coloring() const { return coloring_; }
    [[nodiscard]] const Masking& masking() const { return masking_; }
    [[nodiscard]] bool isCentre() const { return isCentre_; }
    [[nodiscard]] const OverlayState& overlays() const { return overlays_; }
    [[nodiscard]] const std::vector<Point>& markers() const { return markers_; } // in image pixels
    [[nodiscard]] Box extent() const { return {0, 0, width_, height_}; }
    [[nodiscard]] Damage& damage() { return damage_; }

    // The image pixel under a pixel of the view, if there is one.
    [[nodiscard]] std::optional<Pixel> pixelAt(long x, long y) const;

    // Without a picture there is nothing to move.
    void fit();
    void center();
    void zoomAbout(Point at, double factor); // a place of the view stays where it is
    void zoomTo(Point at, double scale);
    void move(long dx, long dy);

    void setLimits(Limits limits);
    void showWholeDepth();
    void showDataLimits();
    void resetContrast(); // as the picture was opened
    void nextMap();
    void setMap(const ColorMap& map); // one of colorMaps()
    void toggleFlags();
    void toggleMask();
    void nextMethod();

    // Changes that overlays draw: switches, the line of the profile.
    void setOverlays(const OverlayState& overlays);

    void setMarkers(std::vector<Point> markers); // that a file or the command line has
    // A person has changed them since they were set or kept.
    [[nodiscard]] bool areMarkersChanged() const { return areMarkersChanged_; }
    void markersKept() { areMarkersChanged_ = false; }
    void addMarker(Point image);
    void moveMarker(std::size_t index, Point image);
    void removeMarker(std::size_t index);
    void showNextMarker(); // moves the image so that one marker after the other is in the middle
    // The uppermost marker that covers a pixel of the view.
    [[nodiscard]] std::optional<std::size_t> markerAt(long x, long y) const;
    // What a marker covers of the view. It moves with the image, by whole pixels.
    [[nodiscard]] Box markerBox(Point image) const;

private:
    [[nodiscard]] Limits limitsKept(const Picture& before, Limits opening) const;
    void placed(const Placement& before);
    void setColoring(const Coloring& coloring);

    Options options_;
    const Picture* picture_ = nullptr;
    Placement placement_;
    Coloring coloring_;
    Limits openedLimits_; // that the picture was opened with
    Masking masking_;
    bool isCentre_;
    OverlayState overlays_;
    std::vector<Point> markers_;
    std::size_t nextMarker_ = 0;
    bool areMarkersChanged_ = false;
    long width_ = 1;
    long height_ = 1;
    Damage damage_;
};

} // namespace talview
