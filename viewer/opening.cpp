// Reading files beside the window, and what becomes of them.
#include "viewer/files/folder.h"
#include "viewer/files/marker_file.h"
#include "viewer/files/picture_file.h"
#include "viewer/view/failure.h"
#include "viewer/viewer.h"

#include <cmath>
#include <cstdio>

namespace talview {
namespace {

// A folder stands for its first picture.
std::wstring pictureOf(const std::wstring& path) {
    if (!isFolder(path)) {
        return path;
    }
    const auto pictures = picturesIn(path);
    if (pictures.empty()) {
        throw Failure("there is no picture in " + utf8(path));
    }
    return pictures.front();
}

} // namespace

// Another file than the one before has no mask: that belonged to the image before, as the markers do.
FileRequest Viewer::requestFor(const std::wstring& path, unsigned frame) const {
    const std::wstring file = pictureOf(path);
    const bool isFirst = asked_.path.empty();
    return {file, isFirst || file == asked_.path ? options_.mask : L"", options_.range, options_.depth,
            frame};
}

void Viewer::open(const std::wstring& path, unsigned frame) {
    try {
        asked_ = requestFor(path, frame);
        watch_.watch(asked_.path);
        reader_.start(asked_);
        tell(L"Reading " + nameOf(asked_.path));
    } catch (const Failure& failure) {
        tell(wide(failure.what()));
    }
}

void Viewer::openAtOnce(const std::wstring& path) {
    asked_ = requestFor(path, static_cast<unsigned>(options_.frame - 1));
    Progress nobodyAsks;
    FilePicture file = readPicture(asked_, nobodyAsks);
    if (!file.note.empty()) {
        std::fprintf(stderr, "talview: %s\n", utf8(file.note).c_str());
    }
    setPicture(asked_, std::move(file));
}

void Viewer::openNeighbour(int steps) {
    const std::wstring path = asked_.path.empty() ? L"" : neighbour(asked_.path, steps);
    if (!path.empty()) {
        open(path);
    }
}

void Viewer::openFrame(int steps) {
    const long frame = static_cast<long>(shown_.frame) + steps;
    if (frame >= 0 && frame < static_cast<long>(frames_)) {
        open(shown_.path, static_cast<unsigned>(frame));
    }
}

void Viewer::reload() {
    if (!asked_.path.empty()) {
        open(asked_.path, asked_.frame);
    }
}

void Viewer::woken() {
    if (auto result = reader_.take()) {
        readingEnded(std::move(*result));
    } else if (const auto share = reader_.progress()) {
        tell(L"Reading " + nameOf(asked_.path) + L": " + std::to_wstring(std::lround(*share * 100)) +
             L" % (Esc stops it)");
    }
    if (!reader_.busy() && watch_.takeChange()) {
        reload();
    }
}

void Viewer::readingEnded(Reader::Result result) {
    if (const auto* whyNot = std::get_if<std::string>(&result.outcome)) {
        tell(wide(*whyNot));
        std::fprintf(stderr, "talview: %s\n", whyNot->c_str());
        return;
    }
    auto& file = std::get<FilePicture>(result.outcome);
    const bool isAnother = result.request.path != shown_.path;
    tell(file.note);
    setPicture(result.request, std::move(file));
    if (isAnother && view_.markers().empty()) {
        readMarkersBeside();
    }
    changed();
}

void Viewer::readMarkersBeside() {
    const std::wstring path = markersBeside(shown_.path);
    if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) {
        try {
            view_.setMarkers(readMarkers(path));
        } catch (const std::runtime_error& failure) {
            tell(wide(failure.what()));
        }
    }
}

void Viewer::setPicture(const FileRequest& request, FilePicture file) {
    if (options_.heights) {
        file.picture.scale = options_.heights->after(file.picture.scale);
    }
    Image image(std::move(file.picture));
    scene_->setImage(image.object());
    view_.setPicture(image.picture(), request.path == shown_.path);
    image_ = std::move(image); // the one before has been let go of
    shown_ = request;
    frames_ = file.frames;
    setTitle();
}

} // namespace talview
