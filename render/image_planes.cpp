// See image_planes.h.

#include "render/image_planes.h"

#include "com/error_codes.h"

#include <utility>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

template <class Kind>
bool queryKind(IUnknown* object, SourceImage& source) {
    ComPtr<Kind> found;
    if (FAILED(object->QueryInterface(IID_PPV_ARGS(&found))) || !found) {
        return false;
    }
    source.image = found;
    return true;
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

HRESULT readSize(SourceImage& source) {
    long width = 0;
    long height = 0;
    HRESULT hr = source.image->get_Width(&width);
    if (SUCCEEDED(hr)) {
        hr = source.image->get_Height(&height);
    }
    source.width = width;
    source.height = height;
    return hr;
}

void findKind(SourceImage& source) {
    const ComPtr<ITalImage> image = source.image;
    for (const ImageKind kind : {ImageKind::Grey8, ImageKind::Color, ImageKind::Grey16, ImageKind::Range16}) {
        source.kind = kind;
        if (SUCCEEDED(setImage(source, image.Get()))) {
            return;
        }
    }
    source.kind = ImageKind::None;
}

HRESULT setImage(SourceImage& source, IUnknown* object) {
    bool found = false;
    switch (source.kind) {
    case ImageKind::Grey8:
        found = queryKind<ITalImage8Grey>(object, source);
        break;
    case ImageKind::Color:
        found = queryKind<ITalImageColor>(object, source);
        break;
    case ImageKind::Grey16:
        found = queryKind<ITalImage16Grey>(object, source);
        break;
    case ImageKind::Range16:
        found = queryKind<ITalImage16Range>(object, source);
        break;
    case ImageKind::None:
        break;
    }
    return found ? S_OK : E_FAIL;
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

HRESULT ImagePlanes::acquire(const SourceImage& source) {
    const HRESULT created = createAccesses(source);
    if (FAILED(created)) {
        return created;
    }
    for (int plane = 0; plane < count_; ++plane) {
        const HRESULT hr = accesses_[plane].view(source.width, source.height, views_[plane]);
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

HRESULT ImagePlanes::createAccesses(const SourceImage& source) {
    ITalImage* const image = source.image.Get();
    switch (source.kind) {
    case ImageKind::Grey8:
        count_ = 1;
        return createAccess<ITalPelAccessSource>(image, accesses_[0]);
    case ImageKind::Color:
        return createColorAccesses(static_cast<ITalImageColor*>(image));
    case ImageKind::Grey16:
        if (FAILED(static_cast<ITalImage16Grey*>(image)->get_DepthCode(&depthCode_))) {
            return E_FAIL;
        }
        count_ = 1;
        return createAccess<ITalPelAccessSource16>(image, accesses_[0]);
    case ImageKind::Range16: {
        const HRESULT hr =
            static_cast<ITalImage16Range*>(image)->CreatePelAccesses(accesses_[0].put(), accesses_[1].put());
        count_ = accesses_[1] ? 2 : 1;
        return hr;
    }
    case ImageKind::None:
        break;
    }
    return S_OK;
}

HRESULT ImagePlanes::createColorAccesses(ITalImageColor* color) {
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

} // namespace talx
