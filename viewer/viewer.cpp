// Commands, and what they change.
#include "viewer/viewer.h"

#include "viewer/commands.h"
#include "viewer/files/folder.h"
#include "viewer/files/image_file.h"
#include "viewer/open_dialog.h"
#include "viewer/status_text.h"
#include "viewer/view/failure.h"

#include <cstdio>
#include <new>

namespace talview {
namespace {

constexpr long arrowStep = 40; // pixels of the view

// A folder stands for its first picture.
Options withFile(Options options) {
    if (isFolder(options.image)) {
        const auto pictures = picturesIn(options.image);
        if (pictures.empty()) {
            throw Failure("there is no picture in " + utf8(options.image));
        }
        options.image = pictures.front();
    }
    return options;
}

std::optional<Image> load(const Options& options) {
    if (options.image.empty()) {
        return std::nullopt;
    }
    return Image(options.range ? loadRangeImage(options.image, options.mask)
                               : loadImage(options.image, options.depth));
}

} // namespace

Viewer::Viewer(const Options& options)
    : options_(withFile(options)), asked_(options_.image),
      window_(options.width, options.height, failure_,
              {[this](const std::wstring& path) { open(path); }, [this](int id) { command(id); },
               [this](int id) { return stateOf(id); },
               [this] {
                   updateStatus();
               }}),
      scene_(window_.handle(), options_, load(options_)) {
    window_.attach(&scene_);
    setTitle();
}

void Viewer::setTitle() {
    const std::wstring& path = options_.image;
    const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
    SetWindowTextW(window_.handle(), (name + (name.empty() ? L"" : L" - ") + L"talview").c_str());
}

void Viewer::open(const std::wstring& path) {
    asked_ = path;
    try {
        Options options = options_;
        options.image = path;
        options = withFile(options);
        asked_ = options.image;
        const bool isSame = options.image == options_.image;
        if (!isSame) {
            options.mask.clear(); // it belongs to the image before, as the markers do
        }
        scene_.setImage(*load(options), isSame);
        options_ = options;
        window_.status().tell(L"");
        setTitle();
    } catch (const std::runtime_error& failure) {
        window_.status().tell(wide(failure.what()));
    } catch (const std::bad_alloc&) {
        window_.status().tell(L"not enough memory for " + path);
    }
}

void Viewer::openNeighbour(int steps) {
    const std::wstring path = asked_.empty() ? L"" : neighbour(asked_, steps);
    if (!path.empty()) {
        open(path);
    }
}

void Viewer::show() {
    window_.show();
    POINT origin{};
    ClientToScreen(window_.handle(), &origin);
    const RECT view = scene_.extent();
    std::printf("shown: client origin %ld,%ld size %ldx%ld\n", origin.x, origin.y, view.right, view.bottom);
    std::fflush(stdout);
}

void Viewer::run(std::optional<double> seconds) {
    window_.run(seconds);
    std::printf("drawn: %ld times\n", window_.drawings());
}

void Viewer::updateStatus() {
    // A picture that is taken from the screen shall depend neither on the mouse nor on the time.
    const bool alive = options_.interactive();
    window_.status().show(statusTexts(scene_, alive ? window_.pointer() : std::nullopt,
                                      alive ? std::optional(window_.drawingMilliseconds()) : std::nullopt));
}

CommandState Viewer::stateOf(int id) const {
    switch (id) {
    case COMMAND_METHOD:
        return {true, scene_.options().centre};
    default:
        return {};
    }
}

void Viewer::command(int id) {
    const RECT view = scene_.extent();
    const POINT middle{view.right / 2, view.bottom / 2};
    window_.status().tell(L"");
    switch (id) {
    case COMMAND_OPEN:
        if (const std::wstring path = askForPicture(window_.handle(), asked_); !path.empty()) {
            open(path);
        }
        return;
    case COMMAND_RELOAD:
        if (!asked_.empty()) {
            open(asked_);
        }
        return;
    case COMMAND_NEXT:
        return openNeighbour(1);
    case COMMAND_PREVIOUS:
        return openNeighbour(-1);
    case COMMAND_CANCEL:
    case COMMAND_EXIT:
        return PostQuitMessage(0);
    case COMMAND_ZOOM_IN:
        return scene_.zoomAbout(middle, zoomStep);
    case COMMAND_ZOOM_OUT:
        return scene_.zoomAbout(middle, 1 / zoomStep);
    case COMMAND_FIT:
        return scene_.fit();
    case COMMAND_FULL_SCALE:
        return scene_.zoomTo(middle, 1);
    case COMMAND_LEFT: // what lies there comes into view
        return scene_.move(arrowStep, 0);
    case COMMAND_RIGHT:
        return scene_.move(-arrowStep, 0);
    case COMMAND_UP:
        return scene_.move(0, arrowStep);
    case COMMAND_DOWN:
        return scene_.move(0, -arrowStep);
    case COMMAND_METHOD:
        return scene_.nextMethod();
    case COMMAND_MAP:
        return scene_.nextMap();
    }
}

} // namespace talview
