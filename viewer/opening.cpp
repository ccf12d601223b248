// Reading files beside the window, and what becomes of them.
#include "viewer/files/folder.h"
#include "viewer/files/marker_file.h"
#include "viewer/files/picture_file.h"
#include "viewer/terminal.h"
#include "viewer/view/failure.h"
#include "viewer/viewer.h"

#include <algorithm>
#include <cmath>

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

std::wstring wholePath(const std::wstring& path) {
    std::wstring whole(32768, L'\0'); // the longest that there are
    const DWORD size =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(whole.size()), whole.data(), nullptr);
    whole.resize(std::min<std::size_t>(size, whole.size()));
    return whole.empty() ? path : whole;
}

bool isSameFile(const std::wstring& one, const std::wstring& other) {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace

// Range values and mask are the named file's; other files are shown as range pictures if they can be.
FileRequest Viewer::requestFor(const std::wstring& path, unsigned frame) {
    const std::wstring file = pictureOf(path);
    if (named_.empty()) {
        named_ = file;
    }
    const bool isNamed = isSameFile(file, named_);
    return {file, isNamed ? options_.mask : L"", options_.range, options_.depth, frame, isNamed};
}

void Viewer::open(const std::wstring& path, unsigned frame) {
    attempt([&] {
        const FileRequest request = requestFor(wholePath(path), frame);
        if (!isSameFile(request.path, shown_.path) && !mayLeavePicture()) {
            return;
        }
        asked_ = request;
        watch_.watch(asked_.path);
        tell(L"Reading " + nameOf(asked_.path));
        reader_.start(asked_);
    });
}

void Viewer::openAtOnce(const std::wstring& path) {
    asked_ = requestFor(path, static_cast<unsigned>(options_.frame - 1));
    Progress nobodyAsks;
    FilePicture file = readPicture(asked_, nobodyAsks);
    if (!file.note.empty()) {
        talview::tell(Output::error, "talview: " + utf8(file.note) + "\n", false);
    }
    if (file.frames > 1 && !options_.has(L"--frame")) {
        talview::tell(Output::error,
                      "talview: this is picture 1 of " + std::to_string(file.frames) + " in the file\n",
                      false);
    }
    setPicture(asked_, std::move(file));
}

bool Viewer::mayLeavePicture() {
    if (!options_.interactive() || !view_.areMarkersChanged()) {
        return true;
    }
    const std::wstring question = L"Save the markers of " + nameOf(shown_.path) + L"?";
    const int answer =
        MessageBoxW(window_.handle(), question.c_str(), L"talview", MB_YESNOCANCEL | MB_ICONQUESTION);
    if (answer == IDNO) {
        view_.markersKept(); // as far as anybody wants
    }
    return answer == IDNO || (answer == IDYES && attempt([this] { saveMarkers(); }));
}

void Viewer::saveMarkers() {
    const std::wstring path = markersBeside(shown_.path);
    writeMarkers(path, view_.markers());
    view_.markersKept();
    tell(L"saved " + path);
}

void Viewer::openNeighbour(int steps) {
    const std::wstring path = asked_.path.empty() ? L"" : neighbour(asked_.path, steps);
    if (!path.empty()) {
        open(path);
    } else {
        tell(steps > 0 ? L"This is the last picture of the folder"
                       : L"This is the first picture of the folder");
    }
}

void Viewer::openFrame(int steps) {
    const bool isAsked = isSameFile(asked_.path, shown_.path);
    const long frame = static_cast<long>(isAsked ? asked_.frame : shown_.frame) + steps;
    if (frame >= 0 && frame < static_cast<long>(frames_)) {
        open(shown_.path, static_cast<unsigned>(frame));
    } else {
        tell(steps > 0 ? L"This is the last picture of the file" : L"This is the first picture of the file");
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
        talview::tell(Output::error, "talview: " + *whyNot + "\n", false);
        if (!view_.picture()) {
            view_.forgetOpening();
        }
        return;
    }
    // Markers may have been set since the file was asked for.
    if (!isSameFile(result.request.path, shown_.path) && !mayLeavePicture()) {
        asked_ = shown_;
        watch_.watch(shown_.path);
        return tell(L"");
    }
    attempt([&] {
        auto& file = std::get<FilePicture>(result.outcome);
        tell(file.note);
        setPicture(result.request, std::move(file));
    });
    changed();
}

void Viewer::setPicture(const FileRequest& request, FilePicture file) {
    const bool isAnother = !isSameFile(request.path, shown_.path);
    if (isAnother) {
        input_.release(); // a drag would go on with what it began with
    }
    if (options_.heights) {
        file.picture.rescale(*options_.heights);
    }
    Image image(std::move(file.picture));
    scene_->setImage(image.object());
    view_.setPicture(image.picture(), !isAnother);
    image_ = std::move(image); // the one before has been let go of
    shown_ = request;
    frames_ = file.frames;
    isIncomplete_ = !file.note.empty();
    setTitle();
    const std::wstring markers = markersBeside(shown_.path);
    const bool isThere = GetFileAttributesW(markers.c_str()) != INVALID_FILE_ATTRIBUTES;
    if (isAnother && isThere && view_.markers().empty()) {
        attempt([&] { view_.setMarkers(readMarkers(markers)); });
    }
}

} // namespace talview
