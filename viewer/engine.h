// Creating a render engine, and holding its device context.
#pragma once

#include "talxrend.h"

#include <wrl/client.h>

namespace talview {

// The GDI engine or the DirectDraw engine, by ProgID. Throws Failure with what to do if none is registered.
[[nodiscard]] Microsoft::WRL::ComPtr<ITalRenderEngine2> createEngine(bool directDraw);

// The engine's device context, clipped to a rectangle, and given back when it goes.
class DrawContext {
public:
    DrawContext(ITalRenderEngine* engine, long layer, const RECT& clip);
    ~DrawContext();
    DrawContext(const DrawContext&) = delete;
    DrawContext& operator=(const DrawContext&) = delete;

    operator HDC() const { return reinterpret_cast<HDC>(handle_); }

private:
    ITalRenderEngine* engine_;
    long layer_;
    __int64 handle_ = 0;
    int saved_ = 0;
};

} // namespace talview
