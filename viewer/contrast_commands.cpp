// What the commands for colours do.
#include "viewer/commands.h"
#include "viewer/view/contrast.h"
#include "viewer/viewer.h"

namespace talview {

bool Viewer::commandContrast(int id) {
    const auto& maps = colorMaps();
    if (id >= COMMAND_FIRST_MAP && id < COMMAND_FIRST_MAP + static_cast<int>(maps.size())) {
        view_.setMap(maps[id - COMMAND_FIRST_MAP]);
        return true;
    }
    const Limits limits = view_.coloring().limits;
    const std::uint32_t count = view_.picture() ? view_.picture()->valueCount() : 256;
    switch (id) {
    case COMMAND_MAP:
        view_.nextMap();
        return true;
    case COMMAND_LIMITS_AUTO:
        view_.showDataLimits();
        return true;
    case COMMAND_LIMITS_RESET:
        view_.resetContrast();
        return true;
    case COMMAND_LIMITS_WHOLE:
        view_.showWholeDepth();
        return true;
    case COMMAND_FLAGS:
        view_.toggleFlags();
        return true;
    case COMMAND_WINDOW_NARROWER:
        view_.setLimits(withWindowStep(limits, -1, count));
        return true;
    case COMMAND_WINDOW_WIDER:
        view_.setLimits(withWindowStep(limits, 1, count));
        return true;
    case COMMAND_LEVEL_DOWN:
        view_.setLimits(withLevelStep(limits, -1, count));
        return true;
    case COMMAND_LEVEL_UP:
        view_.setLimits(withLevelStep(limits, 1, count));
        return true;
    case COMMAND_MASK:
        view_.toggleMask();
        return true;
    }
    return false;
}

} // namespace talview
