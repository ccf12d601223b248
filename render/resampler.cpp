// See resampler.h.

#include "render/resampler.h"

#include "render/pixels/kernels.h"

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

const CLSID& imageClass(ImageKind kind) {
    switch (kind) {
    case ImageKind::Color:
        return __uuidof(TalImageColor);
    case ImageKind::Grey16:
        return __uuidof(TalImage16Grey);
    case ImageKind::Range16:
        return __uuidof(TalImage16Range);
    default:
        return __uuidof(TalImage8Grey);
    }
}

using Kernel = void (*)(const PlaneView&, const PixelRows&, double, const Rect&);

// Values of the 16-bit kinds have 16-bit pels; a range image's mask plane goes through the 8-bit kernel.
Kernel kernelFor(ImageKind kind, int plane, SamplingMethod method) {
    const bool wide = kind == ImageKind::Grey16 || (kind == ImageKind::Range16 && plane == 0);
    if (method == SamplingMethod::CentreAligned) {
        return wide ? resampleCentre16 : resampleCentre8;
    }
    return wide ? resampleNearest16 : resampleNearest8;
}

HRESULT copyDepthCode(ITalImageMemory* to, long depthCode) {
    ComPtr<ITalImage16Grey> grey;
    const HRESULT hr = to->QueryInterface(IID_PPV_ARGS(&grey));
    return FAILED(hr) ? hr : grey->put_DepthCode(depthCode);
}

// Writes the scaled planes of the source into an empty image.
HRESULT fill(ITalImageMemory* memory, const ImagePlanes& planes, ImageKind kind, double scale,
             const Rect& target, SamplingMethod method) {
    HRESULT hr = memory->Allocate(static_cast<long>(target.width()), static_cast<long>(target.height()),
                                  planes.count());
    if (SUCCEEDED(hr) && kind == ImageKind::Grey16) {
        hr = copyDepthCode(memory, planes.depthCode());
    }
    for (int plane = 0; plane < planes.count() && SUCCEEDED(hr); ++plane) {
        PelAccess access;
        PixelRows rows;
        hr = memory->CreatePlaneAccess(plane, talPelAccessReadWrite, access.put());
        if (SUCCEEDED(hr)) {
            hr = access.rows(rows);
        }
        if (SUCCEEDED(hr)) {
            kernelFor(kind, plane, method)(planes[plane], rows, scale, target);
        }
    }
    return hr;
}

} // namespace

HRESULT resample(const SourceImage& source, double scale, long x, long y, const Rect& clip,
                 SamplingMethod method, SourceImage& result) {
    if (!source.image) {
        return E_POINTER;
    }
    const Rect visible = intersect(placeScaled(x, y, source.width, source.height, scale), clip);
    const bool tooThin =
        method == SamplingMethod::CentreAligned && (visible.width() < 3 || visible.height() < 3);
    if (visible.empty() || tooThin || source.kind == ImageKind::None) {
        return S_OK;
    }
    // In scaled-image coordinates; the visible part starts at or after the image's corner.
    const auto move = [](long edge, long origin) {
        return saturate(std::int64_t{edge} - origin);
    };
    const Rect target{move(visible.left, x), move(visible.top, y), move(visible.right, x),
                      move(visible.bottom, y)};

    ComPtr<ITalImageMemory> memory;
    HRESULT hr =
        CoCreateInstance(imageClass(source.kind), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&memory));
    if (FAILED(hr)) {
        return hr;
    }
    ImagePlanes planes;
    hr = planes.acquire(source);
    if (FAILED(hr)) {
        return hr;
    }
    hr = fill(memory.Get(), planes, source.kind, scale, target, method);
    if (FAILED(hr)) {
        return hr;
    }
    result.kind = source.kind;
    result.width = static_cast<std::int32_t>(target.width());
    result.height = static_cast<std::int32_t>(target.height());
    return setImage(result, memory.Get());
}

} // namespace talx
