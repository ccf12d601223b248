// A picture as an image object that engines draw.
#pragma once

#include "viewer/view/picture.h"

#include <talxrend.hpp>

#include <memory>

namespace talview {

class Image {
public:
    // The image object refers to the picture's memory, which is not copied.
    explicit Image(Picture picture);

    [[nodiscard]] const Picture& picture() const { return *picture_; }
    [[nodiscard]] ITalImage* object() const { return image_.Get(); }

private:
    std::shared_ptr<const Picture> picture_;
    talxrend::ComPtr<ITalImage> image_;
};

} // namespace talview
