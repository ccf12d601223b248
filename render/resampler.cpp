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

// Writes the scaled planes into an empty image of the kind that they come from.
void fill(ITalImageMemory* memory, const ImagePlanes& planes, const ImageOfKind& kind, double scale,
          const Rect& target, SamplingMethod method) {
    check(memory->Allocate(target.extent().width, target.extent().height, planes.count()));
    if (std::holds_alternative<ComPtr<ITalImage16Grey>>(kind)) {
        ComPtr<ITalImage16Grey> grey;
        check(memory->QueryInterface(IID_PPV_ARGS(&grey)));
        check(grey->put_DepthCode(planes.depthCode()));
    }
    for (int plane = 0; plane < planes.count(); ++plane) {
        PelAccess access;
        check(memory->CreatePlaneAccess(plane, talPelAccessReadWrite, access.put()));
        kernelFor(hasWidePels(kind, plane), method)(planes[plane], access.rows(), scale, target);
    }
}

} // namespace

std::optional<SourceImage> resample(const SourceImage& source, double scale, long x, long y, const Rect& clip,
                                    SamplingMethod method) {
    const Rect visible = intersect(placeScaled(x, y, source.extent, scale), clip);
    const bool tooThin =
        method == SamplingMethod::CentreAligned && (visible.width() < 3 || visible.height() < 3);
    if (visible.empty() || tooThin) {
        return std::nullopt;
    }
    // In scaled-image coordinates; the visible part starts at or after the image's corner.
    const auto move = [](long edge, long origin) {
        return saturate(std::int64_t{edge} - origin);
    };
    const Rect target{move(visible.left, x), move(visible.top, y), move(visible.right, x),
                      move(visible.bottom, y)};

    ComPtr<ITalImageMemory> memory;
    check(CoCreateInstance(imageClass(source.image), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory)));
    fill(memory.Get(), ImagePlanes(source), source.image, scale, target, method);
    return SourceImage{sameKind(source.image, memory.Get()), target.extent()};
}

} // namespace talx
