// By the system's own idea of a window's place, which is not that of a maximised or minimised one.
#include "viewer/window_place.h"

namespace talview {

void restorePlace(HWND window, const State& state) {
    const Box& box = state.place;
    const RECT place{box.left, box.top, box.right, box.bottom};
    if (box.isEmpty() || !MonitorFromRect(&place, MONITOR_DEFAULTTONULL)) {
        return;
    }
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    placement.showCmd = SW_HIDE;
    placement.rcNormalPosition = place;
    SetWindowPlacement(window, &placement);
}

void keepPlace(HWND window, State& state) {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    if (GetWindowPlacement(window, &placement)) {
        const RECT& place = placement.rcNormalPosition;
        state.place = {place.left, place.top, place.right, place.bottom};
        state.isMaximised =
            placement.showCmd == SW_SHOWMAXIMIZED ||
            (placement.showCmd == SW_SHOWMINIMIZED && (placement.flags & WPF_RESTORETOMAXIMIZED));
    }
}

} // namespace talview
