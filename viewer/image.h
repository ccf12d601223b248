// An image object of the image library, as the viewer uses it.
#pragma once

#include <talxrend.hpp>

#include <cstdint>
#include <string>
#include <utility>

namespace talview {

enum class ImageKind { grey8, grey16, range16, color };

using talxrend::PlaneAccess;

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

    [[nodiscard]] PlaneAccess access(long plane, TalPelAccessMode mode) const {
        return {image_.Get(), plane, mode};
    }

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
    talxrend::ComPtr<ITalImage> image_;
};

} // namespace talview
