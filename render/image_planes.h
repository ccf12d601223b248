// Reaching an image's pixels: which kind it is, and scoped read access to its planes.
#pragma once

#include "render/pixels/pixel_format.h"
#include "talxstd.h"

#include <array>
#include <wrl/client.h>

namespace talx {

enum class ImageKind { None, Grey8, Color, Grey16, Range16 };

// An image as the steps of drawing hand it on.
struct SourceImage {
    Microsoft::WRL::ComPtr<ITalImage> image; // its kind interface once the kind is known
    ImageKind kind = ImageKind::None;
    std::int32_t width = 0;
    std::int32_t height = 0;
};

// Reads the size of source.image.
HRESULT readSize(SourceImage& source);

// Finds the first kind interface that source.image answers, in the order of the enumeration, and puts it in
// the image's place. None for an image that answers none: it is never drawn.
void findKind(SourceImage& source);

// Makes an object the image of a source of a known kind. E_FAIL when it lacks the kind's interface.
HRESULT setImage(SourceImage& source, IUnknown* object);

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
    // Failures: that of creating an access; E_TAL_NO_PIXEL_DATA for a plane or an address that is null;
    // E_FAIL for an image that lacks a source of accesses.
    HRESULT acquire(const SourceImage& source);

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] const PlaneView& operator[](int plane) const { return views_[plane]; }
    // DepthCode of a 16-bit grey image.
    [[nodiscard]] long depthCode() const { return depthCode_; }

private:
    HRESULT createAccesses(const SourceImage& source);
    HRESULT createColorAccesses(ITalImageColor* color);

    std::array<PelAccess, 3> accesses_;
    std::array<PlaneView, 3> views_;
    int count_ = 0;
    long depthCode_ = 0;
};

} // namespace talx
