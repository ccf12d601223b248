// See image_planes.h.

#include "render/image_planes.h"

#include "com/error_codes.h"
#include "com/failure.h"

#include <algorithm>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

template <class Kind>
bool queryKind(IUnknown* object, ComPtr<Kind>& kind) {
    return SUCCEEDED(object->QueryInterface(IID_PPV_ARGS(kind.ReleaseAndGetAddressOf()))) && kind;
}

// Asks for the kinds from one on.
template <std::size_t kind = 0>
std::optional<ImageOfKind> firstKind(ITalImage* image) {
    if constexpr (kind < std::variant_size_v<ImageOfKind>) {
        std::variant_alternative_t<kind, ImageOfKind> found;
        return queryKind(image, found) ? ImageOfKind(std::move(found)) : firstKind<kind + 1>(image);
    } else {
        return std::nullopt;
    }
}

} // namespace

Extent extentOf(ITalImage* image) {
    long width = 0;
    long height = 0;
    check(image->get_Width(&width));
    check(image->get_Height(&height));
    return {width, height};
}

std::optional<ImageOfKind> kindOf(ITalImage* image) {
    return firstKind(image);
}

ImageOfKind sameKind(const ImageOfKind& kind, IUnknown* object) {
    return std::visit(
        [object](auto same) -> ImageOfKind {
            require(queryKind(object, same), E_FAIL);
            return same;
        },
        kind);
}

PelAccess::~PelAccess() {
    if (access_) {
        access_->Unlock();
        access_->Release();
    }
}

ConstPixelRows PelAccess::rows() const {
    __int64 data = 0;
    long stride = 0;
    require(access_ && SUCCEEDED(access_->get_Data(&data)) && data != 0 &&
                SUCCEEDED(access_->get_RowStride(&stride)),
            E_TAL_NO_PIXEL_DATA);
    return {reinterpret_cast<const std::uint8_t*>(data), stride};
}

ImagePlanes::ImagePlanes(const SourceImage& source) : isIcon_(source.isIcon) {
    const Extent now = std::visit(
        [this](const auto& image) {
            createAccesses(image.Get());
            return extentOf(image.Get());
        },
        source.image);
    const Extent extent{std::min(source.extent.width, now.width), std::min(source.extent.height, now.height)};
    for (int plane = 0; plane < count_; ++plane) {
        const ConstPixelRows rows = accesses_[plane].rows();
        views_[plane] = {rows.data, rows.stride, extent};
    }
}

// A read access to the whole plane of an object that offers one.
template <class Source>
void ImagePlanes::createAccess(IUnknown* object, PelAccess& access) const {
    ComPtr<Source> source;
    const HRESULT hr = object->QueryInterface(IID_PPV_ARGS(&source));
    require(SUCCEEDED(hr) && source, isIcon_ && FAILED(hr) ? hr : E_FAIL);
    check(source->CreatePelAccess(talPelAccessRead, 0, 0, 0, 0, access.put()));
}

void ImagePlanes::createAccesses(ITalImage8Grey* image) {
    createAccess<ITalPelAccessSource>(image, accesses_[0]);
}

void ImagePlanes::createAccesses(ITalImageColor* image) {
    for (count_ = 0; count_ < 3; ++count_) {
        ComPtr<IUnknown> plane;
        check(image->GetPlane(count_, &plane));
        require(plane, E_TAL_NO_PIXEL_DATA);
        createAccess<ITalPelAccessSource>(plane.Get(), accesses_[count_]);
    }
}

void ImagePlanes::createAccesses(ITalImage16Grey* image) {
    require(SUCCEEDED(image->get_DepthCode(&depthCode_)), E_FAIL);
    createAccess<ITalPelAccessSource16>(image, accesses_[0]);
}

void ImagePlanes::createAccesses(ITalImage16Range* image) {
    check(image->CreatePelAccesses(accesses_[0].put(), accesses_[1].put()));
    count_ = accesses_[1] ? 2 : 1;
}

} // namespace talx
