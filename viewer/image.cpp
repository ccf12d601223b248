// Image objects and their memory.
#include "viewer/image.h"

#include "viewer/failure.h"

#include <algorithm>

namespace talview {
namespace {

talxrend::ComPtr<ITalImage> newImage(ImageKind kind) {
    const std::string what = notRegistered("talxstd.dll");
    switch (kind) {
    case ImageKind::grey8:
        return talxrend::createImage<ITalImage8Grey>(what);
    case ImageKind::grey16:
        return talxrend::createImage<ITalImage16Grey>(what);
    case ImageKind::range16:
        return talxrend::createImage<ITalImage16Range>(what);
    case ImageKind::color:
        break;
    }
    return talxrend::createImage<ITalImageColor>(what);
}

TalDepthCode depthCode(int bits) {
    return bits == 8    ? talDepth8
           : bits == 10 ? talDepth10
           : bits == 12 ? talDepth12
           : bits == 14 ? talDepth14
                        : talDepth16;
}

} // namespace

Image::Image(ImageKind kind, long width, long height, bool masked, int depth)
    : kind_(kind), width_(width), height_(height), masked_(masked), depth_(kind == ImageKind::grey16 ? depth
                                                                           : kind == ImageKind::range16 ? 16
                                                                                                        : 8),
      image_(newImage(kind)) {
    const long planes = kind == ImageKind::color ? 3 : masked ? 2 : 1;
    talxrend::allocate(image_.Get(), {width, height}, planes);
    if (kind == ImageKind::grey16) {
        talxrend::ComPtr<ITalImage16Grey> grey;
        talxrend::check(image_.As(&grey), "the image is not 16-bit grey");
        talxrend::check(grey->put_DepthCode(depthCode(depth)), grey, "cannot set the image's depth");
    }
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
