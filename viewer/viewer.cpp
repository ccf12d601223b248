// The viewer's life: its window, its scene, and what is drawn when.
#include "viewer/viewer.h"

#include "viewer/file_dialogs.h"
#include "viewer/files/folder.h"
#include "viewer/files/marker_file.h"
#include "viewer/status_text.h"
#include "viewer/view/failure.h"
#include "viewer/window_place.h"

#include <chrono>
#include <cstdio>

namespace talview {

Viewer::Viewer(const Options& options)
    : options_(options), view_(options), input_(view_), window_(options.width, options.height, failure_),
      reader_([this] { window_.wake(); }), watch_([this] { window_.wake(); }) {
    makeScene(options.directDraw);
    if (!options.markersFile.empty()) {
        std::vector<Point> markers = readMarkers(options.markersFile);
        markers.insert(markers.end(), options.markers.begin(), options.markers.end());
        view_.setMarkers(std::move(markers));
    }
    if (!options.image.empty()) {
        options.interactive() ? open(options.image, options.frame - 1) : openAtOnce(options.image);
    }
    window_.attach(this);
    setTitle();
}

Viewer::~Viewer() {
    window_.attach(nullptr);
}

void Viewer::makeScene(bool directDraw) {
    scene_.reset(); // two engines for one window would draw over each other
    scene_ = std::make_unique<Scene>(window_.handle(), view_, directDraw);
    scene_->setImage(image_ ? image_->object() : nullptr);
    changed();
}

void Viewer::show(bool isMaximised) {
    window_.show(isMaximised);
    window_.setFullScreen(options_.fullScreen);
    POINT origin{};
    ClientToScreen(window_.handle(), &origin);
    const RECT view = scene_->extent();
    std::printf("shown: client origin %ld,%ld size %ldx%ld\n", origin.x, origin.y, view.right, view.bottom);
    std::fflush(stdout);
}

void Viewer::run(std::optional<double> seconds) {
    window_.run(seconds);
    std::printf("drawn: %ld times\n", drawings_);
}

State Viewer::state() {
    window_.setFullScreen(false);
    State state;
    keepPlace(window_.handle(), state);
    state.map = view_.coloring().map->name;
    state.folder = asked_.path.empty() ? options_.folder : wholeFolder(asked_.path);
    return state;
}

void Viewer::changed() {
    window_.repaint();
}

void Viewer::paint(const RECT& uncovered) {
    try {
        draw(uncovered);
    } catch (const talxrend::Failure&) {
        // The engine may have lost what it draws on, with the display's colours for one: once, another one
        // tries.
        makeScene(scene_->isDirectDraw());
        draw(scene_->extent());
    }
    updateStatus();
}

void Viewer::draw(const RECT& uncovered) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    scene_->compose();
    const std::vector<RECT> drawn = scene_->takeComposed();
    for (const RECT& part : drawn) {
        scene_->refresh(part);
    }
    scene_->refresh(uncovered);
    if (!drawn.empty()) {
        drawingMilliseconds_ = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        ++drawings_;
    }
}

void Viewer::resized() {
    scene_->resize();
    changed();
}

void Viewer::paletteChanged() {
    scene_->paletteChanged();
    changed();
}

void Viewer::displayChanged() {
    makeScene(scene_->isDirectDraw());
}

void Viewer::pressed(MouseButton button, POINT at, bool shift) {
    window_.status().tell(L"");
    input_.press(button, {static_cast<double>(at.x), static_cast<double>(at.y)}, shift);
    changed();
}

void Viewer::moved(POINT to) {
    if (input_.isHeld()) {
        input_.move({static_cast<double>(to.x), static_cast<double>(to.y)});
        changed();
    }
    updateStatus();
}

void Viewer::wheel(POINT at, double notches) {
    window_.status().tell(L"");
    input_.wheel({static_cast<double>(at.x), static_cast<double>(at.y)}, notches);
    changed();
}

void Viewer::tell(const std::wstring& message) {
    window_.status().tell(message);
}

void Viewer::setTitle() {
    const std::wstring name = nameOf(shown_.path);
    SetWindowTextW(window_.handle(), (name + (name.empty() ? L"" : L" - ") + L"talview").c_str());
}

void Viewer::updateStatus() {
    // A picture that is taken from the screen shall depend neither on the mouse nor on the time.
    const bool isAlive = options_.interactive();
    window_.status().show(statusTexts(*scene_, isAlive ? window_.pointer() : std::nullopt,
                                      isAlive ? std::optional(drawingMilliseconds_) : std::nullopt));
}

} // namespace talview
