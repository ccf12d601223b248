// See draw_image.h.

#include "render/draw_image.h"

#include "render/resampler.h"
#include "render/transfer.h"

namespace talx {

void drawImage(CompositionBuffer& buffer, EngineState& state, ITalImage* image,
               const ImagePlacement& placement) {
    if (!image) {
        return;
    }
    Microsoft::WRL::ComPtr<ITalImage> held(image);
    const Extent extent = extentOf(image);
    const auto& [x, y, scale, callerClip] = placement;
    const Rect placed = placeScaled(x, y, extent, scale);
    const Rect clip = intersect(intersect(placed, callerClip), {0, 0, state.width, state.height});
    if (clip.empty() || extent.empty() || !buffer.exists()) {
        return;
    }
    std::optional<ImageOfKind> kind = kindOf(image);
    if (!kind) {
        return;
    }
    SourceImage source{std::move(*kind), extent};
    if (isUnitScale(scale)) {
        return transfer(buffer, state.colors, source, x, y, clip);
    }
    if (!isShown(source.image, buffer.format())) {
        // It fails as it would be seen to fail elsewhere, but nothing is scaled.
        const ImagePlanes planes(source);
        return;
    }
    const auto method = state.scalingMethod == talRenderEngineScalingMethodBilinearInterpolation
                            ? SamplingMethod::CentreAligned
                            : SamplingMethod::Nearest;
    const Scaling scaling{x, y, scale, method, state.colors.visiblePixelMaskEnable};
    if (auto scaled = resample(source, scaling, clip, state.scratch)) {
        source = std::move(*scaled); // the image itself is needed no more
        held.Reset();
        transfer(buffer, state.colors, source, clip.left, clip.top, clip);
    }
}

} // namespace talx
