// Pictures with and without masks.
#include "viewer/files/picture_file.h"

#include "viewer/files/frame.h"
#include "viewer/view/failure.h"

#include <algorithm>

namespace talview {
namespace {

FilePicture readFrame(const std::wstring& path, unsigned frame, int depth, Progress& progress,
                      Frame::Part part) {
    Frame file(path, frame, progress, part);
    FilePicture result;
    result.frame = frame;
    result.frames = file.frames();
    result.picture = file.read(depth, result.note);
    return result;
}

// Whatever the file's pixels are.
Block<std::uint8_t> maskOf(Picture picture) {
    Block<std::uint8_t> mask(picture.at(0, picture.height));
    const auto isShown = [&](std::size_t at) {
        const int channels = std::min(picture.channels, 3);
        for (int channel = 0; channel < channels; ++channel) {
            const std::size_t index = at * picture.channels + channel;
            if (picture.real ? picture.real[index] != 0 : picture.deep[index] != 0) {
                return true;
            }
        }
        return channels == 0 &&
               (picture.words ? picture.words[at] != 0
                              : std::any_of(picture.bytes.begin(), picture.bytes.end(),
                                            [&](const auto& plane) { return plane && plane[at] != 0; }));
    };
    for (std::size_t i = 0; i < mask.size(); ++i) {
        mask[i] = isShown(i) ? 255 : 0;
    }
    return mask;
}

} // namespace

FilePicture readPicture(const FileRequest& request, Progress& progress) {
    const double half = request.mask.empty() ? 1 : 0.5;
    FilePicture read =
        readFrame(request.path, request.frame, request.range ? 16 : request.depth, progress, {0, half});
    Picture& picture = read.picture;
    if (request.range && (request.mustBeRange || picture.kind == PictureKind::grey16)) {
        if (picture.kind != PictureKind::grey16) {
            throw Failure(utf8(request.path) + " is not a 16-bit grey picture, so it holds no range values");
        }
        picture.kind = PictureKind::range16;
    }
    if (request.range && !request.mask.empty()) {
        FilePicture mask = readFrame(request.mask, 0, 16, progress, {half, 1});
        if (mask.picture.width != picture.width || mask.picture.height != picture.height) {
            throw Failure("the mask " + utf8(request.mask) + " has " + std::to_string(mask.picture.width) +
                          "x" + std::to_string(mask.picture.height) + " pixels, the image " +
                          std::to_string(picture.width) + "x" + std::to_string(picture.height));
        }
        picture.mask = maskOf(std::move(mask.picture));
        if (!mask.note.empty()) {
            read.note += (read.note.empty() ? L"" : L"; ") + (L"of the mask " + mask.note);
        }
    }
    return read;
}

} // namespace talview
