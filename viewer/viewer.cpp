// The viewer's life: its window, its scene, and what is drawn when.
#include "viewer/viewer.h"

#include "viewer/file_dialogs.h"
#include "viewer/files/folder.h"
#include "viewer/files/marker_file.h"
#include "viewer/state_file.h"
#include "viewer/status_text.h"
#include "viewer/view/failure.h"
#include "viewer/window_place.h"

#include <chrono>
#include <cstdio>
#include <new>

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
    auto scene = std::make_unique<Scene>(window_.handle(), view_, directDraw);
    scene->setImage(image_ ? image_->object() : nullptr);
    scene->showOverlays(areOverlaysShown_);
    scene_ = std::move(scene);
    changed();
}

void Viewer::showOverlays(bool shown) {
    areOverlaysShown_ = shown;
    scene_->showOverlays(shown);
}

bool Viewer::attempt(const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const std::runtime_error& failure) {
        if (!options_.interactive()) {
            throw;
        }
        tell(wide(failure.what()));
    } catch (const std::bad_alloc&) {
        if (!options_.interactive()) {
            throw;
        }
        tell(L"not enough memory");
    }
    return false;
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

void Viewer::keepState() {
    if (!options_.remembers || !options_.interactive()) {
        return;
    }
    window_.setFullScreen(false);
    State state;
    keepPlace(window_.handle(), state);
    state.map = view_.coloring().map->name;
    state.folder = asked_.path.empty() ? options_.folder : wholeFolder(asked_.path);
    writeState(state);
}

void Viewer::changed() {
    window_.repaint();
}

void Viewer::paint(const RECT& uncovered) {
    try {
        draw(uncovered);
    } catch (const talxrend::Failure&) {
        // The engine may have lost what it draws on, with the display's colours for one: once, another one
        // tries, and for DirectDraw, GDI after it.
        const auto drawAnew = [this](bool directDraw) {
            return attempt([&] {
                makeScene(directDraw);
                draw(scene_->extent());
            });
        };
        if (!drawAnew(scene_->isDirectDraw()) && scene_->isDirectDraw()) {
            drawAnew(false);
        }
    } catch (const std::bad_alloc&) {
        tell(L"not enough memory to draw");
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
    attempt([this] { scene_->resize(); });
    changed();
}

void Viewer::paletteChanged() {
    attempt([this] { scene_->paletteChanged(); });
    changed();
}

void Viewer::displayChanged() {
    attempt([this] { makeScene(scene_->isDirectDraw()); });
}

void Viewer::dpiChanged() {
    scene_->setDpi(screenOf(window_.handle()).dpi);
    changed();
}

void Viewer::pressed(MouseButton button, POINT at, bool shift) {
    tell(L"");
    input_.press(button, {static_cast<double>(at.x), static_cast<double>(at.y)}, shift);
    changed();
}

void Viewer::moved(POINT to) {
    if (input_.isHeld()) {
        input_.move({static_cast<double>(to.x), static_cast<double>(to.y)});
        changed();
    }
    if (!reader_.busy() && window_.status().hasBeenRead()) {
        tell(L"");
    }
    updateStatus();
}

void Viewer::wheel(POINT at, double notches) {
    tell(L"");
    input_.wheel({static_cast<double>(at.x), static_cast<double>(at.y)}, notches);
    changed();
}

// On the whole screen there is no status line.
void Viewer::tell(const std::wstring& message) {
    window_.status().tell(message);
    OverlayState overlays = view_.overlays();
    overlays.message = window_.isFullScreen() ? message : L"";
    view_.setOverlays(overlays);
    changed();
}

void Viewer::setTitle() {
    const std::wstring name = nameOf(shown_.path);
    SetWindowTextW(window_.handle(), (name + (name.empty() ? L"" : L" - ") + L"talview").c_str());
}

void Viewer::updateStatus() {
    if (!view_.picture() && !window_.status().hasMessage()) {
        tell(L"No picture: Ctrl+O opens one, F1 shows help");
    }
    StatusFacts facts{{}, {}, shown_.frame, frames_, isIncomplete_};
    if (options_.interactive()) { // a picture of the screen shall depend neither on the mouse nor on the time
        facts.pointer = window_.pointer();
        facts.milliseconds = drawingMilliseconds_;
    }
    window_.status().show(statusTexts(*scene_, facts));
}

} // namespace talview
