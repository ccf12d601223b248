// Commands, and what they change.
#include "viewer/viewer.h"

#include "viewer/commands.h"
#include "viewer/image_file.h"
#include "viewer/status_text.h"

#include <cstdio>

namespace talview {
namespace {

Image load(const Options& options) {
    return options.range ? loadRangeImage(options.image, options.mask)
                         : loadImage(options.image, options.depth);
}

} // namespace

Viewer::Viewer(const Options& options)
    : options_(options), window_(options.width, options.height, failure_,
                                 {[this](int id) { command(id); },
                                  [this] {
                                      updateStatus();
                                  }}),
      scene_(window_.handle(), options, load(options)) {
    window_.attach(&scene_);
    SetWindowTextW(window_.handle(),
                   (options.image.substr(options.image.find_last_of(L"\\/") + 1) + L" - talview").c_str());
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

void Viewer::command(int id) {
    const RECT view = scene_.extent();
    const POINT middle{view.right / 2, view.bottom / 2};
    switch (id) {
    case COMMAND_EXIT:
        return PostQuitMessage(0);
    case COMMAND_ZOOM_IN:
        return scene_.zoomAbout(middle, zoomStep);
    case COMMAND_ZOOM_OUT:
        return scene_.zoomAbout(middle, 1 / zoomStep);
    case COMMAND_FIT:
        return scene_.fit();
    case COMMAND_METHOD:
        return scene_.nextMethod();
    case COMMAND_MAP:
        return scene_.nextMap();
    }
}

} // namespace talview
