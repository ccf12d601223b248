// An owner's event sink that records what it is told and may answer.
#pragma once

#include "tests/support/stack_object.h"

#include "talxrend.h"

#include <functional>
#include <vector>

namespace talx::test {

struct LayerEvent {
    long first, last, left, top, right, bottom;
    bool operator==(const LayerEvent&) const = default;
};

// An engine holds no reference to its sink: the count shows that it takes none.
class EventSink final : public StackObject<ITalRenderEngineEvents> {
public:
    std::vector<LayerEvent> events;
    std::function<void(const LayerEvent&)> answer; // called after the event is recorded; may call the engine
    HRESULT result = S_OK;

    STDMETHOD(InvalidateLayers)(long first, long last, long l, long t, long r, long b) override {
        events.push_back({first, last, l, t, r, b});
        if (answer) {
            answer(events.back());
        }
        return result;
    }
};

} // namespace talx::test
