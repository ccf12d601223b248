#include "render/image_planes.h"

#include "com/error_codes.h"

#include <utility>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

template <class Interface>
bool answers(ITalImage* image) {
    ComPtr<Interface> found;
    return SUCCEEDED(image->QueryInterface(IID_PPV_ARGS(&found))) && found;
}

// A read access to the whole plane of an object that offers one.
template <class Source>
HRESULT createAccess(IUnknown* object, PelAccess& access) {
    ComPtr<Source> source;
    if (FAILED(object->QueryInterface(IID_PPV_ARGS(&source))) || !source) {
        return E_FAIL;
    }
    return source->CreatePelAccess(talPelAccessRead, 0, 0, 0, 0, access.put());
}

} // namespace

ImageKind imageKind(ITalImage* image) {
    if (answers<ITalImage8Grey>(image)) {
        return ImageKind::Grey8;
    }
    if (answers<ITalImageColor>(image)) {
        return ImageKind::Color;
    }
    if (answers<ITalImage16Grey>(image)) {
        return ImageKind::Grey16;
    }
    return answers<ITalImage16Range>(image) ? ImageKind::Range16 : ImageKind::None;
}

PelAccess::~PelAccess() {
    if (access_) {
        access_->Unlock();
        access_->Release();
    }
}

HRESULT PelAccess::view(std::int32_t width, std::int32_t height, PlaneView& plane) const {
    PixelRows pixels;
    const HRESULT hr = rows(pixels);
    plane = {pixels.data, pixels.stride, width, height};
    return hr;
}

HRESULT PelAccess::rows(PixelRows& rows) const {
    __int64 data = 0;
    long stride = 0;
    if (!access_ || FAILED(access_->get_Data(&data)) || data == 0 ||
        FAILED(access_->get_RowStride(&stride))) {
        return E_TAL_NO_PIXEL_DATA;
    }
    rows = {reinterpret_cast<std::uint8_t*>(data), stride};
    return S_OK;
}

HRESULT ImagePlanes::acquire(ITalImage* image, ImageKind kind, std::int32_t width, std::int32_t height) {
    const HRESULT created = createAccesses(image, kind);
    if (FAILED(created)) {
        return created;
    }
    for (int plane = 0; plane < count_; ++plane) {
        const HRESULT hr = accesses_[plane].view(width, height, views_[plane]);
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

HRESULT ImagePlanes::createAccesses(ITalImage* image, ImageKind kind) {
    switch (kind) {
    case ImageKind::Grey8:
        count_ = 1;
        return createAccess<ITalPelAccessSource>(image, accesses_[0]);
    case ImageKind::Color: {
        ComPtr<ITalImageColor> color;
        if (FAILED(image->QueryInterface(IID_PPV_ARGS(&color)))) {
            return E_FAIL;
        }
        for (count_ = 0; count_ < 3; ++count_) {
            ComPtr<IUnknown> plane;
            HRESULT hr = color->GetPlane(count_, &plane);
            if (SUCCEEDED(hr)) {
                hr = plane ? createAccess<ITalPelAccessSource>(plane.Get(), accesses_[count_])
                           : E_TAL_NO_PIXEL_DATA;
            }
            if (FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }
    case ImageKind::Grey16: {
        ComPtr<ITalImage16Grey> grey;
        if (FAILED(image->QueryInterface(IID_PPV_ARGS(&grey))) || FAILED(grey->get_DepthCode(&depthCode_))) {
            return E_FAIL;
        }
        count_ = 1;
        return createAccess<ITalPelAccessSource16>(image, accesses_[0]);
    }
    case ImageKind::Range16: {
        ComPtr<ITalImage16Range> range;
        if (FAILED(image->QueryInterface(IID_PPV_ARGS(&range)))) {
            return E_FAIL;
        }
        const HRESULT hr = range->CreatePelAccesses(accesses_[0].put(), accesses_[1].put());
        count_ = accesses_[1] ? 2 : 1;
        return hr;
    }
    case ImageKind::None:
        break;
    }
    return S_OK;
}

} // namespace talx
