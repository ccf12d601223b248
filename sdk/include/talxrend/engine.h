// A render engine with its window, its layers and the owner's way to draw them.
//
// Rectangles and positions are in pixels of the view, which is the client area of the window; right and
// bottom lie outside. Whatever fails throws a Failure with the engine's own description.
#pragma once

#include "talxrend/com.h"
#include "talxrend/safe_array.h"

#include <talxrend.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>

namespace talxrend {

// Draws one layer, clipped to a rectangle.
using DrawLayer = std::function<void(long layer, const RECT& rect)>;

// What an engine calls while a layer is updated. The engine ignores what the sink answers; so what the
// function throws is kept here, and the remaining layers are left out. LayerUpdate throws it; after
// BeginLayerUpdate or EndLayerUpdate through the interface, Engine::check does.
class EventSink final : public Object<ITalRenderEngineEvents> {
public:
    explicit EventSink(DrawLayer drawLayer) : draw(std::move(drawLayer)) {}

    STDMETHOD(InvalidateLayers)
    (long first, long last, long left, long top, long right, long bottom) override {
        const ComPtr<EventSink> self(this); // the function may let go of the engine, and so of this
        failure.run([&] {
            for (long layer = first; layer <= last && isOpen; ++layer) {
                draw(layer, {left, top, right, bottom});
            }
        });
        return failure.holdsFailure() ? E_FAIL : S_OK;
    }

    const DrawLayer draw;
    Guard failure;
    bool isOpen = true; // false: whom it draws for has gone
};

// An initialised engine. It stays where it is made, since functions that draw layers refer to it: one that
// can be replaced lives in a std::optional or std::unique_ptr.
class Engine {
public:
    // object: from create or Library::create. The view gets the size of the window's client area, at least 1
    // x 1. draw is called whenever layers are to be drawn; it may call anything, and may even destroy this.
    // The window must outlive this.
    Engine(ComPtr<ITalRenderEngine2> object, HWND window, long layers, DrawLayer draw)
        : object_(std::move(object)), window_(window), sink_(new EventSink(std::move(draw))) {
        const SIZE size = clientSize();
        check(object_->Initialize(reinterpret_cast<__int64>(window), std::max<LONG>(size.cx, 1),
                                  std::max<LONG>(size.cy, 1)),
              "cannot set up the render engine");
        check(object_->put_Layers(layers), "Layers");
        object_->QueryInterface(IID_PPV_ARGS(&targets_));
        check(object_->AdviseRenderEvents(sink_.Get()), "AdviseRenderEvents");
    }
    ~Engine() {
        object_->UnAdvise(); // the engine holds its sink without a reference
        sink_->isOpen = false;
    }
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // The engine's own interfaces.
    ITalRenderEngine2* operator->() const { return object_.Get(); }
    [[nodiscard]] const ComPtr<ITalRenderEngine2>& object() const { return object_; }
    // Null for the DirectDraw engine.
    [[nodiscard]] ITalRenderTargetAccess* targets() const { return targets_.Get(); }
    [[nodiscard]] const ComPtr<EventSink>& sink() const { return sink_; }

    // Throws what the drawing of layers has thrown, or a Failure if a method called through -> has failed.
    void check(HRESULT hr, std::string_view what) const {
        sink_->failure.rethrow();
        talxrend::check(hr, object_, what);
    }

    // The whole view.
    [[nodiscard]] RECT extent() const {
        RECT view{};
        check(object_->GetExtent(&view.right, &view.bottom), "GetExtent");
        return view;
    }

    // Gives the view the size of the window's client area. False if it has it already, or the window has no
    // client area (because it is minimised, for one); otherwise everything is to be drawn again.
    [[nodiscard]] bool resize() const {
        const SIZE size = clientSize();
        const RECT view = extent();
        if (size.cx < 1 || size.cy < 1 || (size.cx == view.right && size.cy == view.bottom)) {
            return false;
        }
        check(object_->SetExtent(size.cx, size.cy), "cannot resize the view");
        return true;
    }

    // Redraws a layer in a rectangle with all layers below and above it. Nothing is shown yet.
    void update(long layer, const RECT& rect) const;
    // The same for all layers.
    void update(const RECT& rect) const { update(0, rect); }

    // Copies a rectangle to the window, or to the render target. The DirectDraw engine draws on the screen
    // and fails where that ends, so its rectangle is clipped to the desktop, which is all monitors together.
    void show(const RECT& rect) const {
        const RECT view = extent();
        RECT part;
        POINT origin{};
        ClientToScreen(window_, &origin);
        RECT desktop{0, 0, GetSystemMetrics(SM_CXVIRTUALSCREEN), GetSystemMetrics(SM_CYVIRTUALSCREEN)};
        OffsetRect(&desktop, GetSystemMetrics(SM_XVIRTUALSCREEN) - origin.x,
                   GetSystemMetrics(SM_YVIRTUALSCREEN) - origin.y);
        if (IntersectRect(&part, &rect, &view) && (targets_ || IntersectRect(&part, &part, &desktop))) {
            check(object_->RefreshScreen(origin.x, origin.y, part.left, part.top, part.right, part.bottom),
                  "RefreshScreen");
        }
    }

    // color: 0x00BBGGRR, or a system colour's index.
    void fill(long layer, const RECT& r, OLE_COLOR color) const {
        check(object_->Fill(layer, r.left, r.top, r.right, r.bottom, color), "Fill");
    }

    // at: view position of the image's top left pixel. scale: view pixels for each image pixel.
    void drawImage(long layer, ITalImage* image, POINT at, double scale, const RECT& r) const {
        check(object_->DrawImage(layer, image, at.x, at.y, scale, r.left, r.top, r.right, r.bottom, 0),
              "DrawImage");
    }

    // colors: 256 OLE colours; transparencies: 256 per cents. The position is cut toward zero.
    void drawIcon(long layer, ITalImage8Grey* icon, SafeArray& colors, SafeArray& transparencies, double x,
                  double y, double scale, const RECT& r) const {
        check(object_->DrawIcon8(layer, icon, colors.address(), transparencies.address(), x, y, scale, r.left,
                                 r.top, r.right, r.bottom),
              "DrawIcon8");
    }

    // Colours 0x00RRGGBB for image values from 0 on; values without one show the grey ramp. On 256-colour
    // screens the colours of the 8-bit map are looked up again, which is what PaletteChange does.
    void put8GreyMap(std::span<const std::uint32_t> colors) const {
        check(object_->put_Image8GreyWholeColorMap(SafeArray(colors).address()), "Image8GreyWholeColorMap");
        check(object_->PaletteChange(), "PaletteChange");
    }
    void put16GreyMap(std::span<const std::uint32_t> colors) const {
        check(object_->put_Image16GreyColorMap(SafeArray(colors).address()), "Image16GreyColorMap");
    }
    void put16RangeMap(std::span<const std::uint32_t> colors) const {
        check(object_->put_Image16RangeColorMap(SafeArray(colors).address()), "Image16RangeColorMap");
    }
    // The owner's colours, 0xFFRRGGBB.
    [[nodiscard]] std::vector<std::uint32_t> get8GreyMap() const {
        SafeArray map;
        check(object_->get_Image8GreyWholeColorMap(map.put()), "Image8GreyWholeColorMap");
        return map.colors();
    }
    [[nodiscard]] std::vector<std::uint32_t> get16GreyMap() const {
        SafeArray map;
        check(object_->get_Image16GreyColorMap(map.put()), "Image16GreyColorMap");
        return map.colors();
    }
    [[nodiscard]] std::vector<std::uint32_t> get16RangeMap() const {
        SafeArray map;
        check(object_->get_Image16RangeColorMap(map.put()), "Image16RangeColorMap");
        return map.colors();
    }

    void putScalingMethod(TalRenderEngineScalingMethodConstants method) const {
        ComPtr<ITalRenderEngineScalingParams> scaling;
        check(object_.As(&scaling), "the engine has no scaling method");
        check(scaling->put_ScalingMethod(method), "ScalingMethod");
    }

private:
    [[nodiscard]] SIZE clientSize() const {
        RECT client{};
        GetClientRect(window_, &client);
        return {client.right, client.bottom};
    }

    ComPtr<ITalRenderEngine2> object_;
    HWND window_;
    ComPtr<EventSink> sink_;
    ComPtr<ITalRenderTargetAccess> targets_;
};

// The rectangle that an image drawn at a position and scale covers.
[[nodiscard]] inline RECT coveredBy(SIZE image, POINT at, double scale) {
    const auto end = [&](LONG begin, LONG size) {
        return static_cast<LONG>(
            std::clamp<double>(begin + std::floor(size * scale + 0.5), LONG_MIN, LONG_MAX));
    };
    return {at.x, at.y, end(at.x, image.cx), end(at.y, image.cy)};
}

// What to update in place of a part of the view so that it shows exactly what the whole view would, where an
// image drawn by method 1 (centre-aligned) covers a rectangle: that method counts from the left and top edges
// of what it draws, and draws nothing of fewer than 3 columns or rows.
[[nodiscard]] inline RECT alignedPart(const RECT& part, const RECT& covered, const RECT& view) {
    RECT visible;
    RECT touched;
    if (!IntersectRect(&visible, &covered, &view) || !IntersectRect(&touched, &part, &visible)) {
        return part;
    }
    const auto reaching = [](LONG right, LONG first, LONG last) {
        return std::max<LONG>(right, std::min<LONG>(first + 3, last));
    };
    return {std::min<LONG>(part.left, visible.left), std::min<LONG>(part.top, visible.top),
            reaching(part.right, visible.left, visible.right),
            reaching(part.bottom, visible.top, visible.bottom)};
}

// An update of one layer as a scope: the engine asks for the layers below as it begins and for those above as
// it ends. Both throw what the drawing of those layers has thrown. Without end() the destructor ends the
// update, and what fails in it is lost.
class LayerUpdate {
public:
    LayerUpdate(const Engine& engine, long layer, const RECT& rect)
        : engine_(engine.object()), sink_(engine.sink()), layer_(layer), rect_(rect) {
        report(engine_, engine_->BeginLayerUpdate(layer, rect.left, rect.top, rect.right, rect.bottom),
               "BeginLayerUpdate");
    }
    ~LayerUpdate() {
        if (engine_) {
            engine_->EndLayerUpdate(layer_, rect_.left, rect_.top, rect_.right, rect_.bottom);
            sink_->failure.forget();
        }
    }
    LayerUpdate(const LayerUpdate&) = delete;
    LayerUpdate& operator=(const LayerUpdate&) = delete;

    void end() {
        if (const auto engine = std::exchange(engine_, nullptr)) {
            report(engine, engine->EndLayerUpdate(layer_, rect_.left, rect_.top, rect_.right, rect_.bottom),
                   "EndLayerUpdate");
        }
    }

private:
    void report(const ComPtr<ITalRenderEngine2>& engine, HRESULT hr, std::string_view what) const {
        sink_->failure.rethrow();
        check(hr, engine, what);
    }

    ComPtr<ITalRenderEngine2> engine_; // null: ended
    ComPtr<EventSink> sink_;
    long layer_;
    RECT rect_;
};

inline void Engine::update(long layer, const RECT& rect) const {
    const ComPtr<EventSink> sink = sink_;
    LayerUpdate update(*this, layer, rect);
    if (sink->isOpen) {
        sink->draw(layer, rect);
    }
    update.end();
}

// The engine's device context, clipped to a rectangle, as a scope: to draw with GDI. Nothing else may be
// drawn, copied or resized meanwhile. end() throws if the engine does not take the context back; the
// destructor swallows that.
class DrawContext {
public:
    DrawContext(const Engine& engine, long layer, const RECT& clip)
        : engine_(engine.object()), layer_(layer) {
        check(engine_->GetDrawContext(layer, &handle_), engine_, "GetDrawContext");
        saved_ = SaveDC(*this);
        IntersectClipRect(*this, clip.left, clip.top, clip.right, clip.bottom);
    }
    ~DrawContext() {
        if (engine_) {
            giveBack(engine_.Get());
        }
    }
    DrawContext(const DrawContext&) = delete;
    DrawContext& operator=(const DrawContext&) = delete;

    operator HDC() const { return reinterpret_cast<HDC>(handle_); }

    void end() {
        if (const auto engine = std::exchange(engine_, nullptr)) {
            check(giveBack(engine.Get()), engine, "ReleaseDrawContext");
        }
    }

private:
    HRESULT giveBack(ITalRenderEngine2* engine) const {
        RestoreDC(*this, saved_); // nothing of the owner's stays selected
        return engine->ReleaseDrawContext(layer_, handle_);
    }

    ComPtr<ITalRenderEngine2> engine_; // null: ended
    long layer_;
    __int64 handle_ = 0;
    int saved_ = 0;
};

} // namespace talxrend
