// An image object of the image library, as the viewer uses it.
#pragma once

#include "talxstd.h"

#include <wrl/client.h>

#include <cstdint>
#include <string>
#include <utility>

namespace talview {

enum class ImageKind { grey8, grey16, range16, color };

// Access to the pixel memory of one plane, ended when it goes.
class PlaneAccess {
public:
    PlaneAccess(ITalImageMemory* memory, long plane, TalPelAccessMode mode);
    ~PlaneAccess();
    PlaneAccess(const PlaneAccess&) = delete;
    PlaneAccess& operator=(const PlaneAccess&) = delete;

    template <class Pel>
    [[nodiscard]] Pel* row(long y) const {
        return reinterpret_cast<Pel*>(data_ + static_cast<std::ptrdiff_t>(stride_) * y);
    }

private:
    Microsoft::WRL::ComPtr<ITalPelAccess> access_;
    std::uint8_t* data_ = nullptr;
    long stride_ = 0;
};

class Image {
public:
    // A new black image. masked: a range image has a mask plane. depth: significant bits of 16-bit grey, one
    // of 8, 10, 12, 14, 16.
    Image(ImageKind kind, long width, long height, bool masked = false, int depth = 16);

    [[nodiscard]] ITalImage* object() const { return image_.Get(); }
    [[nodiscard]] ImageKind kind() const { return kind_; }
    [[nodiscard]] long width() const { return width_; }
    [[nodiscard]] long height() const { return height_; }
    // Number of different pixel values of a plane.
    [[nodiscard]] std::uint32_t valueCount() const { return kind_ == ImageKind::color ? 256 : 1u << depth_; }

    [[nodiscard]] PlaneAccess access(long plane, TalPelAccessMode mode) const;

    // The pixel's value as text; (x, y) lies in the image.
    [[nodiscard]] std::wstring valueText(long x, long y) const;
    // Smallest and largest visible value of a grey or range image.
    [[nodiscard]] std::pair<std::uint32_t, std::uint32_t> valueLimits() const;
    [[nodiscard]] std::wstring kindText() const;

private:
    ImageKind kind_;
    long width_;
    long height_;
    bool masked_;
    int depth_;
    Microsoft::WRL::ComPtr<ITalImage> image_;
    Microsoft::WRL::ComPtr<ITalImageMemory> memory_;
};

} // namespace talview
