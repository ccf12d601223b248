// Image objects and their memory.
#include "viewer/image.h"

#include "viewer/failure.h"

#include <algorithm>

namespace talview {
namespace {

const CLSID& classOf(ImageKind kind) {
    switch (kind) {
    case ImageKind::grey8:
        return __uuidof(TalImage8Grey);
    case ImageKind::grey16:
        return __uuidof(TalImage16Grey);
    case ImageKind::range16:
        return __uuidof(TalImage16Range);
    case ImageKind::color:
        break;
    }
    return __uuidof(TalImageColor);
}

TalDepthCode depthCode(int bits) {
    return bits == 8    ? talDepth8
           : bits == 10 ? talDepth10
           : bits == 12 ? talDepth12
           : bits == 14 ? talDepth14
                        : talDepth16;
}

} // namespace

PlaneAccess::PlaneAccess(ITalImageMemory* memory, long plane, TalPelAccessMode mode) {
    check(memory->CreatePlaneAccess(plane, mode, &access_), "cannot reach the image's memory");
    __int64 data = 0;
    access_->get_Data(&data);
    access_->get_RowStride(&stride_);
    data_ = reinterpret_cast<std::uint8_t*>(data);
}

PlaneAccess::~PlaneAccess() {
    access_->Unlock();
}

Image::Image(ImageKind kind, long width, long height, bool masked, int depth)
    : kind_(kind), width_(width), height_(height), masked_(masked), depth_(kind == ImageKind::grey16 ? depth
                                                                           : kind == ImageKind::range16 ? 16
                                                                                                        : 8) {
    checkCreated(CoCreateInstance(classOf(kind), nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&image_)),
                 "talxstd.dll");
    check(image_.As(&memory_), "the image gives no access to its memory");
    const long planes = kind == ImageKind::color ? 3 : masked ? 2 : 1;
    check(memory_->Allocate(width, height, planes), "cannot allocate the image");
    if (kind == ImageKind::grey16) {
        Microsoft::WRL::ComPtr<ITalImage16Grey> grey;
        check(image_.As(&grey), "the image is not 16-bit grey");
        check(grey->put_DepthCode(depthCode(depth)), "cannot set the image's depth");
    }
}

PlaneAccess Image::access(long plane, TalPelAccessMode mode) const {
    return {memory_.Get(), plane, mode};
}

std::wstring Image::valueText(long x, long y) const {
    const auto byteAt = [&](long plane) {
        return access(plane, talPelAccessRead).row<std::uint8_t>(y)[x];
    };
    switch (kind_) {
    case ImageKind::color:
        return std::to_wstring(byteAt(0)) + L" " + std::to_wstring(byteAt(1)) + L" " +
               std::to_wstring(byteAt(2));
    case ImageKind::grey8:
        return std::to_wstring(byteAt(0));
    case ImageKind::grey16:
    case ImageKind::range16:
        break;
    }
    return std::to_wstring(access(0, talPelAccessRead).row<std::uint16_t>(y)[x]) +
           (masked_ && byteAt(1) == 0 ? L" (hidden)" : L"");
}

std::pair<std::uint32_t, std::uint32_t> Image::valueLimits() const {
    std::uint32_t low = 0xFFFF;
    std::uint32_t high = 0;
    const PlaneAccess values = access(0, talPelAccessRead);
    const PlaneAccess mask = access(masked_ ? 1 : 0, talPelAccessRead);
    for (long y = 0; y < height_; ++y) {
        for (long x = 0; x < width_; ++x) {
            if (masked_ && mask.row<std::uint8_t>(y)[x] == 0) {
                continue;
            }
            const std::uint32_t value =
                kind_ == ImageKind::grey8 ? values.row<std::uint8_t>(y)[x] : values.row<std::uint16_t>(y)[x];
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    return {low, high};
}

std::wstring Image::kindText() const {
    switch (kind_) {
    case ImageKind::grey8:
        return L"8-bit grey";
    case ImageKind::grey16:
        return std::to_wstring(depth_) + L"-bit grey";
    case ImageKind::range16:
        return masked_ ? L"range with mask" : L"range";
    case ImageKind::color:
        break;
    }
    return L"colour";
}

} // namespace talview
