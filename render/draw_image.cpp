// See draw_image.h.

#include "render/draw_image.h"

#include "render/resampler.h"
#include "render/transfer.h"

namespace talx {

HRESULT drawImage(LayerSurface& surface, EngineState& state, ITalImage* image,
                  const ImagePlacement& placement) {
    if (!image) {
        return S_OK;
    }
    SourceImage source;
    source.image = image;
    HRESULT hr = readSize(source);
    if (FAILED(hr)) {
        return hr;
    }
    const auto& [x, y, scale, callerClip] = placement;
    const Rect placed = placeScaled(x, y, source.width, source.height, scale);
    const Rect clip = intersect(intersect(placed, callerClip), {0, 0, state.width, state.height});
    if (clip.empty() || source.width <= 0 || source.height <= 0 || !surface.hasBuffer()) {
        return S_OK;
    }
    findKind(source);
    if (source.kind == ImageKind::None) {
        return S_OK;
    }
    if (isUnitScale(scale)) {
        return transfer(surface, state.colors, source, x, y, clip);
    }
    const auto method = state.scalingMethod == talRenderEngineScalingMethodBilinearInterpolation
                            ? SamplingMethod::CentreAligned
                            : SamplingMethod::Nearest;
    SourceImage scaled;
    hr = resample(source, scale, x, y, clip, method, scaled);
    if (FAILED(hr) || !scaled.image) {
        return hr;
    }
    source = std::move(scaled);
    return transfer(surface, state.colors, source, clip.left, clip.top, clip);
}

} // namespace talx
