// Reaching an image's pixels: which kind it is, and scoped read access to its planes.
#pragma once

#include "render/pixels/pixel_format.h"
#include "talxstd.h"

#include <array>
#include <optional>
#include <variant>
#include <wrl/client.h>

namespace talx {

// The kind interface by which an image is drawn. The kinds stand in the order in which an image is asked for
// them.
using ImageOfKind =
    std::variant<Microsoft::WRL::ComPtr<ITalImage8Grey>, Microsoft::WRL::ComPtr<ITalImageColor>,
                 Microsoft::WRL::ComPtr<ITalImage16Grey>, Microsoft::WRL::ComPtr<ITalImage16Range>>;

// An image as the steps of drawing hand it on.
struct SourceImage {
    ImageOfKind image;
    Extent extent;
    bool isIcon = false; // its failing queries are answered as they are, an image's are E_FAIL
};

// A function object for each kind, as one for std::visit: a kind that is left out does not compile.
template <class... Cases>
struct ForKind : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
ForKind(Cases...) -> ForKind<Cases...>;

// The functions of this file throw what fails (com/failure.h).

// The size that an image states.
[[nodiscard]] Extent extentOf(ITalImage* image);

// The first kind interface that an image answers; nothing for one that answers none: it is never drawn.
[[nodiscard]] std::optional<ImageOfKind> kindOf(ITalImage* image);

// The interface of the same kind of another object.
[[nodiscard]] ImageOfKind sameKind(const ImageOfKind& kind, IUnknown* object);

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

    // The plane's pixels. E_TAL_NO_PIXEL_DATA when the access gives no address.
    [[nodiscard]] ConstPixelRows rows() const;

private:
    ITalPelAccess* access_ = nullptr;
};

// Read access to all planes of an image: 1 for the grey kinds, 3 (red, green, blue) for colour, 1 or 2
// (values and mask) for range.
class ImagePlanes {
public:
    // Failures: that of creating an access; E_TAL_NO_PIXEL_DATA for a plane or an address that is null;
    // E_FAIL for an image that lacks a source of accesses or does not tell its depth.
    explicit ImagePlanes(const SourceImage& source);

    // What can be read of every plane: no more than the source's size, and no more than the image states now
    // that it has been asked for its planes.
    [[nodiscard]] Extent extent() const { return views_[0].extent; }

    [[nodiscard]] int count() const { return count_; }
    [[nodiscard]] const PlaneView& operator[](int plane) const { return views_[plane]; }
    // DepthCode of a 16-bit grey image.
    [[nodiscard]] long depthCode() const { return depthCode_; }

private:
    void createAccesses(ITalImage8Grey* image);
    void createAccesses(ITalImageColor* image);
    void createAccesses(ITalImage16Grey* image);
    void createAccesses(ITalImage16Range* image);
    template <class Source>
    void createAccess(IUnknown* object, PelAccess& access) const;

    std::array<PelAccess, 3> accesses_;
    std::array<PlaneView, 3> views_;
    const bool isIcon_;
    int count_ = 1;
    long depthCode_ = 0;
};

} // namespace talx
