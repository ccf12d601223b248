// The engine by its name in the registry.
#include "viewer/engine.h"

#include "viewer/failure.h"

namespace talview {

Microsoft::WRL::ComPtr<ITalRenderEngine2> createEngine(bool directDraw) {
    const wchar_t* progId = directDraw ? L"Hemlar.TalRenderEngine" : L"Hemlar.TalGDIRenderEngine";
    CLSID clsid;
    checkCreated(CLSIDFromProgID(progId, &clsid), "talxrend.dll");
    Microsoft::WRL::ComPtr<ITalRenderEngine2> engine;
    checkCreated(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&engine)),
                 "talxrend.dll");
    return engine;
}

DrawContext::DrawContext(ITalRenderEngine* engine, long layer, const RECT& clip)
    : engine_(engine), layer_(layer) {
    check(engine->GetDrawContext(layer, &handle_), "GetDrawContext");
    saved_ = SaveDC(*this);
    IntersectClipRect(*this, clip.left, clip.top, clip.right, clip.bottom);
}

DrawContext::~DrawContext() {
    RestoreDC(*this, saved_);
    engine_->ReleaseDrawContext(layer_, handle_);
}

} // namespace talview
