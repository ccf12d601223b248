// The state that both engines have: extent, layers and their events, colours, scaling method.
#pragma once

#include "render/pixels/color_maps.h"
#include "render/pixels/geometry.h"
#include "render/scratch_memory.h"
#include "talxrend.h"

namespace talx {

// The logical layers and the owner's sink. The sink is held without a reference: the owner holds the engine.
class LayerEvents {
public:
    void setCount(long count) { count_ = count; }
    [[nodiscard]] long count() const { return count_; }
    void setSink(ITalRenderEngineEvents* sink) { sink_ = sink; }

    // Asks the owner to redraw the layers below, or above, a layer in a rectangle already clipped to the
    // view. Nothing is raised for a layer that does not exist, nor from inside the owner's answer.
    void raiseBelow(long layer, const Rect& rect);
    void raiseAbove(long layer, const Rect& rect);

private:
    void raise(long first, long last, const Rect& rect);

    long count_ = 0;
    ITalRenderEngineEvents* sink_ = nullptr;
    bool inEvent_ = false;
};

// The colour maps and the visible pixel mask.
struct ColorState {
    GreyColorMap8 grey8Map;
    ColorMap16 grey16Map;
    ColorMap16 range16Map;
    bool visiblePixelMaskEnable = false;
    OLE_COLOR visiblePixelMaskColor = 0; // as the owner gave it
};

struct EngineState {
    long width = 0; // extent of the view in pixels
    long height = 0;
    bool initialized = false;
    LayerEvents layers;
    ColorState colors;
    TalRenderEngineScalingMethodConstants scalingMethod = talRenderEngineScalingMethodNoInterpolation;
    ScratchMemory scratch; // of scaled drawing

    // The part of a rectangle that lies in the view.
    [[nodiscard]] Rect clip(long left, long top, long right, long bottom) const {
        return intersect({left, top, right, bottom}, {0, 0, width, height});
    }
};

} // namespace talx
