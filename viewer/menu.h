// The menu, whose items are commands of commands.h.
#pragma once

#include <windows.h>

#include <functional>

namespace talview {

struct CommandState {
    bool isEnabled = true;
    bool isChecked = false;
};

// The whole menu, for a window, which then owns it.
[[nodiscard]] HMENU loadMenu();

// Gives each command in a part of the menu the state that it has now; submenus are left alone. For
// WM_INITMENUPOPUP.
void updateMenu(HMENU part, const std::function<CommandState(int command)>& stateOf);

} // namespace talview
