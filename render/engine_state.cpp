// See engine_state.h.

#include "render/engine_state.h"

namespace talx {

namespace {

// Marks that the owner is answering an event.
class EventScope {
public:
    explicit EventScope(bool& inEvent) : inEvent_(inEvent) { inEvent_ = true; }
    ~EventScope() { inEvent_ = false; }
    EventScope(const EventScope&) = delete;
    EventScope& operator=(const EventScope&) = delete;

private:
    bool& inEvent_;
};

} // namespace

void LayerEvents::raiseBelow(long layer, const Rect& rect) {
    if (layer >= 1 && layer < count_) {
        raise(0, layer - 1, rect);
    }
}

void LayerEvents::raiseAbove(long layer, const Rect& rect) {
    if (layer >= 0 && layer < count_) {
        raise(layer + 1, count_ - 1, rect);
    }
}

void LayerEvents::raise(long first, long last, const Rect& rect) {
    if (rect.empty() || !sink_ || inEvent_ || first > last) {
        return;
    }
    const EventScope scope(inEvent_);
    sink_->InvalidateLayers(first, last, rect.left, rect.top, rect.right, rect.bottom);
}

} // namespace talx
