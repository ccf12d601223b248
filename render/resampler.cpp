// See resampler.h.

#include "render/resampler.h"

#include "com/failure.h"
#include "render/pixels/kernels.h"

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

const CLSID& imageClass(const ImageOfKind& kind) {
    return std::visit(
        ForKind{
            [](const ComPtr<ITalImage8Grey>&) -> const CLSID& { return __uuidof(TalImage8Grey); },
            [](const ComPtr<ITalImageColor>&) -> const CLSID& { return __uuidof(TalImageColor); },
            [](const ComPtr<ITalImage16Grey>&) -> const CLSID& { return __uuidof(TalImage16Grey); },
            [](const ComPtr<ITalImage16Range>&) -> const CLSID& { return __uuidof(TalImage16Range); },
        },
        kind);
}

// Whether the pels of a plane have 16 bits: the values of the 16-bit kinds do, the mask of a range image does
// not.
bool hasWidePels(const ImageOfKind& kind, int plane) {
    return std::visit(ForKind{
                          [](const ComPtr<ITalImage8Grey>&) { return false; },
                          [](const ComPtr<ITalImageColor>&) { return false; },
                          [](const ComPtr<ITalImage16Grey>&) { return true; },
                          [plane](const ComPtr<ITalImage16Range>&) { return plane == 0; },
                      },
                      kind);
}

using Kernel = void (*)(const PlaneView&, const PixelRows&, double, const Rect&);

Kernel kernelFor(bool widePels, SamplingMethod method) {
    switch (method) {
    case SamplingMethod::CentreAligned:
        return widePels ? resampleCentre16 : resampleCentre8;
    case SamplingMethod::Nearest:
        break;
    }
    return widePels ? resampleNearest16 : resampleNearest8;
}

// Rows of scaled planes are so many bytes apart, or a multiple of it.
constexpr std::int64_t rowAlignment = 64;

// The planes of a scaled image, one behind the other in a block of memory.
class ScaledPlanes {
public:
    ScaledPlanes(ScratchMemory& scratch, const ImageOfKind& kind, int count, Extent extent)
        : extent_(extent) {
        std::int64_t size = 0;
        for (int plane = 0; plane < count; ++plane) {
            const std::int64_t rowBytes = std::int64_t{extent.width} * (hasWidePels(kind, plane) ? 2 : 1);
            offsets_[plane] = size;
            strides_[plane] = (rowBytes + rowAlignment - 1) / rowAlignment * rowAlignment;
            size += strides_[plane] * extent.height;
        }
        block_ = scratch.take(static_cast<std::size_t>(size));
    }

    [[nodiscard]] PixelRows rows(int plane) const {
        return {block_->bytes() + offsets_[plane], static_cast<std::ptrdiff_t>(strides_[plane])};
    }

    // Makes a plane of the image refer to this memory, which then lives as long as the image.
    void wrapInto(ITalImageMemory* image, int plane) const {
        check(image->Wrap(plane, extent_.width, extent_.height, reinterpret_cast<INT_PTR>(rows(plane).data),
                          static_cast<long>(strides_[plane]), block_.Get()));
    }

private:
    Extent extent_;
    std::array<std::int64_t, 3> offsets_{};
    std::array<std::int64_t, 3> strides_{}; // in bytes
    ScratchMemory::Block block_;
};

void copyDepthCode(ITalImageMemory* image, long depthCode) {
    ComPtr<ITalImage16Grey> grey;
    check(image->QueryInterface(IID_PPV_ARGS(&grey)));
    check(grey->put_DepthCode(depthCode));
}

} // namespace

std::optional<SourceImage> resample(const SourceImage& source, const Scaling& scaling, const Rect& clip,
                                    ScratchMemory& scratch) {
    const auto& [x, y, scale, method, withMask] = scaling;
    const Rect visible = intersect(placeScaled(x, y, source.extent, scale), clip);
    if (visible.empty()) {
        return std::nullopt;
    }
    // In scaled-image coordinates; the visible part starts at or after the image's corner.
    const auto move = [](long edge, long origin) {
        return saturate(std::int64_t{edge} - origin);
    };
    const Rect target{move(visible.left, x), move(visible.top, y), move(visible.right, x),
                      move(visible.bottom, y)};

    ComPtr<ITalImageMemory> image;
    check(CoCreateInstance(imageClass(source.image), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&image)));
    const ImagePlanes planes(source);
    // The kernel would leave such pixels as they are, too, and the memory is not cleared.
    const bool tooThin =
        method == SamplingMethod::CentreAligned && (visible.width() < 3 || visible.height() < 3);
    if (planes.extent().empty() || tooThin) {
        return std::nullopt;
    }
    const bool isRange = std::holds_alternative<ComPtr<ITalImage16Range>>(source.image);
    const int count = isRange && !withMask ? 1 : planes.count();
    const ScaledPlanes scaled(scratch, source.image, count, target.extent());
    for (int plane = 0; plane < count; ++plane) {
        kernelFor(hasWidePels(source.image, plane), method)(planes[plane], scaled.rows(plane), scale, target);
        scaled.wrapInto(image.Get(), plane);
    }
    if (std::holds_alternative<ComPtr<ITalImage16Grey>>(source.image)) {
        copyDepthCode(image.Get(), planes.depthCode());
    }
    return SourceImage{sameKind(source.image, image.Get()), target.extent(), source.isIcon};
}

} // namespace talx
