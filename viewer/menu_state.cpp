// What the menu shows of each command.
#include "viewer/commands.h"
#include "viewer/viewer.h"

namespace talview {

CommandState Viewer::stateOf(int id) const {
    const Picture* picture = view_.picture();
    const bool hasPicture = picture != nullptr;
    const bool hasMap = hasPicture && picture->hasMap();
    const OverlayState& overlays = view_.overlays();
    const auto& maps = colorMaps();
    if (id >= COMMAND_FIRST_MAP) {
        return {hasMap, &maps.at(id - COMMAND_FIRST_MAP) == view_.coloring().map};
    }
    switch (id) {
    case COMMAND_RELOAD:
    case COMMAND_NEXT:
    case COMMAND_PREVIOUS:
        return {!asked_.path.empty()};
    case COMMAND_NEXT_FRAME:
    case COMMAND_PREVIOUS_FRAME:
        return {frames_ > 1};
    case COMMAND_FULL_SCREEN:
        return {true, window_.isFullScreen()};
    case COMMAND_METHOD:
        return {true, view_.isCentre()};
    case COMMAND_ENGINE:
        return {true, scene_->isDirectDraw()};
    case COMMAND_MAP:
    case COMMAND_LIMITS_AUTO:
    case COMMAND_LIMITS_RESET:
    case COMMAND_LIMITS_WHOLE:
    case COMMAND_WINDOW_NARROWER:
    case COMMAND_WINDOW_WIDER:
    case COMMAND_LEVEL_DOWN:
    case COMMAND_LEVEL_UP:
        return {hasMap};
    case COMMAND_FLAGS:
        return {hasMap, view_.coloring().flags == Flags::on};
    case COMMAND_MASK:
        return {hasPicture && picture->mask, view_.masking().isOn};
    case COMMAND_GRID:
        return {true, overlays.grid};
    case COMMAND_COLOR_BAR:
        return {hasMap, overlays.colorBar};
    case COMMAND_HISTOGRAM:
        return {true, overlays.histogram};
    case COMMAND_PROFILE:
        return {hasPicture, overlays.profile};
    case COMMAND_OVERLAYS:
        return {true, !areOverlaysShown_};
    case COMMAND_HELP:
        return {true, overlays.help};
    case COMMAND_COPY_VALUE:
    case COMMAND_MARKER_ADD:
        return {hasPicture};
    case COMMAND_MARKER_DELETE:
    case COMMAND_MARKER_NEXT:
        return {!view_.markers().empty()};
    case COMMAND_MARKERS_SAVE:
    case COMMAND_MARKERS_LOAD:
        return {hasPicture};
    default:
        return {};
    }
}

} // namespace talview
