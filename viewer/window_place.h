// Where a window is on the desktop.
#pragma once

#include "viewer/view/state.h"

#include <windows.h>

namespace talview {

// Moves a hidden window to the place of the state, unless no monitor shows any of that place now.
void restorePlace(HWND window, const State& state);
// Writes the place of a window into the state; it must not be full screen.
void keepPlace(HWND window, State& state);

} // namespace talview
