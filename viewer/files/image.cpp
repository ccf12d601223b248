// Image objects of the image library around the memory of pictures.
#include "viewer/files/image.h"

#include "viewer/view/failure.h"

namespace talview {
namespace {

using talxrend::ComPtr;

template <class Kind>
ComPtr<Kind> newImage() {
    return talxrend::createImage<Kind>(notRegistered("talxstd.dll"));
}

TalDepthCode depthCode(int bits) {
    return bits == 8    ? talDepth8
           : bits == 10 ? talDepth10
           : bits == 12 ? talDepth12
           : bits == 14 ? talDepth14
                        : talDepth16;
}

ComPtr<ITalImage> wrap(const std::shared_ptr<const Picture>& picture) {
    const SIZE size{picture->width, picture->height};
    const talxrend::KeepAlive alive = talxrend::keepAlive(picture);
    const auto plane = [&](ITalImage* image, long index, const auto& block) {
        using Pel = std::remove_cvref_t<decltype(block[0])>;
        talxrend::wrapPlane<Pel>(image, index, size,
                                 {block.data(), static_cast<long>(picture->width * sizeof(Pel))}, alive);
    };
    ComPtr<ITalImage> image;
    switch (picture->kind) {
    case PictureKind::grey8:
        talxrend::check(newImage<ITalImage8Grey>().As(&image), "the 8-bit grey image is no image");
        plane(image.Get(), 0, picture->bytes[0]);
        break;
    case PictureKind::grey16: {
        const auto grey = newImage<ITalImage16Grey>();
        talxrend::check(grey->put_DepthCode(depthCode(picture->depth)), grey, "cannot set the image's depth");
        talxrend::check(grey.As(&image), "the 16-bit grey image is no image");
        plane(image.Get(), 0, picture->words);
        break;
    }
    case PictureKind::range16:
        talxrend::check(newImage<ITalImage16Range>().As(&image), "the range image is no image");
        plane(image.Get(), 0, picture->words);
        if (picture->mask) {
            plane(image.Get(), 1, picture->mask);
        }
        break;
    case PictureKind::color:
        talxrend::check(newImage<ITalImageColor>().As(&image), "the colour image is no image");
        for (long index = 0; index < 3; ++index) {
            plane(image.Get(), index, picture->bytes[index]);
        }
        break;
    }
    return image;
}

} // namespace

Image::Image(Picture picture)
    : picture_(std::make_shared<const Picture>(std::move(picture))), image_(wrap(picture_)) {}

} // namespace talview
