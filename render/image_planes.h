// Reaching an image's pixels: which kind it is, and scoped read access to its planes.
#pragma once

#include "render/pixels/pixel_format.h"
#include "talxstd.h"

#include <array>
#include <wrl/client.h>

namespace talx {

enum class ImageKind { None, Grey8, Color, Grey16, Range16 };

// The first kind interface that an image answers, in the order of the enumeration. None for an image that
// answers none: it is never drawn.
[[nodiscard]] ImageKind imageKind(ITalImage* image);

// An access to one plane, unlocked at the end.
class PelAccess {
public:
    PelAccess() = default;
    PelAccess(const PelAccess&) = delete;
    PelAccess& operator=(const PelAccess&) = delete;
    ~PelAccess();

    // Where a method that creates an access puts it; whatever is put there is unlocked and released.
    [[nodiscard]] ITalPelAccess** put() { return &access_; }
    [[nodiscard]] explicit operator bool() const { return access_ != nullptr; }

    // The plane of the given size. E_TAL_NO_PIXEL_DATA when the access gives no address.
    HRESULT view(std::int32_t width, std::int32_t height, PlaneView& plane) const;
    // The plane's pixels, to be written.
    HRESULT rows(PixelRows& rows) const;

private:
    ITalPelAccess* access_ = nullptr;
};

// Read access to all planes of an image: 1 for the grey kinds, 3 (red, green, blue) for colour, 1 or 2
// (values and mask) for range.
class ImagePlanes {
public:
    // width and height are the image's own. Failures: that of creating an access; E_TAL_NO_PIXEL_DATA for a
    // plane or an address that is null; E_FAIL for an image that lacks an interface of its kind.
    HRESULT acquire(ITalImage* image, ImageKind kind, std::int32_t width, std::int32_t height);

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] const PlaneView& operator[](int plane) const { return views_[plane]; }
    // DepthCode of a 16-bit grey image.
    [[nodiscard]] long depthCode() const { return depthCode_; }

private:
    HRESULT createAccesses(ITalImage* image, ImageKind kind);

    std::array<PelAccess, 3> accesses_;
    std::array<PlaneView, 3> views_;
    int count_ = 0;
    long depthCode_ = 0;
};

} // namespace talx
