// What each command does.
#include "viewer/commands.h"

#include "viewer/file_dialogs.h"
#include "viewer/files/folder.h"
#include "viewer/files/marker_file.h"
#include "viewer/share/clipboard.h"
#include "viewer/share/print.h"
#include "viewer/share/save.h"
#include "viewer/status_text.h"
#include "viewer/view/failure.h"
#include "viewer/viewer.h"

#include <cmath>

namespace talview {
namespace {

constexpr long arrowStep = 40; // pixels of the view
constexpr char about[] =
    "talview " TALVIEW_VERSION "\nShows pictures through the render engines of talxrend.";

} // namespace

void Viewer::command(int id) {
    if (!stateOf(id).isEnabled) { // on the whole screen there is no menu that stops the key
        return;
    }
    tell(L"");
    attempt([&] {
        if (!commandFile(id) && !commandPlace(id) && !commandContrast(id) && !commandOverlay(id)) {
            commandMarker(id);
        }
    });
    changed();
}

bool Viewer::commandFile(int id) {
    switch (id) {
    case COMMAND_OPEN:
        if (const std::wstring path =
                askForPicture(window_.handle(), asked_.path.empty() ? options_.folder : asked_.path);
            !path.empty()) {
            open(path);
        }
        return true;
    case COMMAND_RELOAD:
        reload();
        return true;
    case COMMAND_NEXT:
        openNeighbour(1);
        return true;
    case COMMAND_PREVIOUS:
        openNeighbour(-1);
        return true;
    case COMMAND_NEXT_FRAME:
        openFrame(1);
        return true;
    case COMMAND_PREVIOUS_FRAME:
        openFrame(-1);
        return true;
    case COMMAND_SAVE:
        if (const std::wstring path = askForSaveName(window_.handle(), shown_.path); !path.empty()) {
            save(path);
            tell(L"saved " + path);
        }
        return true;
    case COMMAND_COPY:
        copyView(window_.handle(), *scene_);
        tell(L"copied the picture");
        return true;
    case COMMAND_COPY_VALUE:
        copyValue();
        return true;
    case COMMAND_PRINT:
        print(
            window_.handle(), [this]() -> Scene& { return *scene_; }, nameOf(shown_.path));
        return true;
    case COMMAND_CANCEL:
        cancel();
        return true;
    case COMMAND_EXIT:
        if (mayLeavePicture()) {
            PostQuitMessage(0);
        }
        return true;
    }
    return false;
}

void Viewer::cancel() {
    if (reader_.busy()) {
        reader_.cancel();
        asked_ = shown_;
        watch_.watch(shown_.path);
        tell(L"stopped");
    } else if (input_.isHeld()) {
        input_.release();
    } else if (view_.overlays().help) {
        commandOverlay(COMMAND_HELP);
    } else if (window_.isFullScreen()) {
        window_.setFullScreen(false);
    }
}

void Viewer::save(const std::wstring& path) {
    scene_->showOverlays(areOverlaysShown_ && options_.savesOverlays);
    const auto format = static_cast<TalRenderTargetFormatConstants>(options_.format);
    struct Restore {
        ~Restore() { scene.showOverlays(areShown); }
        Scene& scene;
        bool areShown;
    } const restore{*scene_, areOverlaysShown_};
    talview::save(*scene_, scene_->isDirectDraw() ? talRenderTargetFormatUnspecified : format, path);
}

void Viewer::copyValue() {
    const std::wstring text = valueAt(view_, window_.aim());
    if (!text.empty()) {
        copyText(window_.handle(), text);
        tell(L"copied " + text);
    } else {
        tell(L"There is no pixel");
    }
}

bool Viewer::commandPlace(int id) {
    const Box view = view_.extent();
    const Point middle{std::floor(view.right / 2.0), std::floor(view.bottom / 2.0)};
    switch (id) {
    case COMMAND_ZOOM_IN:
        view_.zoomAbout(middle, zoomStep);
        return true;
    case COMMAND_ZOOM_OUT:
        view_.zoomAbout(middle, 1 / zoomStep);
        return true;
    case COMMAND_FIT:
        view_.fit();
        return true;
    case COMMAND_FULL_SCALE:
        view_.zoomTo(middle, 1);
        return true;
    case COMMAND_CENTRE:
        view_.center();
        return true;
    case COMMAND_LEFT: // what lies there comes into view
        view_.move(arrowStep, 0);
        return true;
    case COMMAND_RIGHT:
        view_.move(-arrowStep, 0);
        return true;
    case COMMAND_UP:
        view_.move(0, arrowStep);
        return true;
    case COMMAND_DOWN:
        view_.move(0, -arrowStep);
        return true;
    case COMMAND_FINE_LEFT:
        view_.move(1, 0);
        return true;
    case COMMAND_FINE_RIGHT:
        view_.move(-1, 0);
        return true;
    case COMMAND_FINE_UP:
        view_.move(0, 1);
        return true;
    case COMMAND_FINE_DOWN:
        view_.move(0, -1);
        return true;
    case COMMAND_FULL_SCREEN:
        window_.setFullScreen(!window_.isFullScreen());
        return true;
    case COMMAND_METHOD:
        view_.nextMethod();
        return true;
    case COMMAND_ENGINE:
        makeScene(!scene_->isDirectDraw());
        return true;
    }
    return false;
}

bool Viewer::commandOverlay(int id) {
    OverlayState overlays = view_.overlays();
    switch (id) {
    case COMMAND_GRID:
        overlays.grid = !overlays.grid;
        break;
    case COMMAND_COLOR_BAR:
        overlays.colorBar = !overlays.colorBar;
        break;
    case COMMAND_HISTOGRAM:
        overlays.histogram = !overlays.histogram;
        break;
    case COMMAND_PROFILE:
        overlays.profile = !overlays.profile;
        if (overlays.profile) {
            showProfile(overlays);
        }
        break;
    case COMMAND_OVERLAYS:
        showOverlays(!areOverlaysShown_);
        return true;
    case COMMAND_HELP:
        overlays.help = !overlays.help;
        showOverlays(true);
        break;
    case COMMAND_ABOUT:
        MessageBoxW(window_.handle(), wide(about).c_str(), L"talview", MB_OK);
        return true;
    default:
        return false;
    }
    view_.setOverlays(overlays);
    return true;
}

// Without a line yet, it is the row of the picture that the command is aimed at.
void Viewer::showProfile(OverlayState& overlays) {
    const POINT at = window_.aim();
    const auto pixel = view_.pixelAt(at.x, at.y);
    if (!overlays.line && pixel) {
        const auto row = static_cast<double>(pixel->y);
        overlays.line = Line{{0, row}, {view_.picture()->width - 1.0, row}};
    }
    tell(L"The left button drags another line");
    overlays.message = view_.overlays().message;
}

void Viewer::commandMarker(int id) {
    const POINT at = window_.aim();
    switch (id) {
    case COMMAND_MARKER_ADD:
        if (const auto pixel = view_.pixelAt(at.x, at.y)) {
            view_.addMarker({static_cast<double>(pixel->x), static_cast<double>(pixel->y)});
        } else {
            tell(L"There is no pixel");
        }
        break;
    case COMMAND_MARKER_DELETE:
        if (const auto marker = view_.markerAt(at.x, at.y)) {
            view_.removeMarker(*marker);
        } else {
            tell(L"There is no marker");
        }
        break;
    case COMMAND_MARKER_NEXT:
        view_.showNextMarker();
        window_.aimAtMiddle(); // where it is now
        break;
    case COMMAND_MARKERS_SAVE:
        saveMarkers();
        break;
    case COMMAND_MARKERS_LOAD:
        if (!mayLeavePicture()) {
            break;
        }
        view_.setMarkers(readMarkers(markersBeside(shown_.path)));
        break;
    }
}

} // namespace talview
