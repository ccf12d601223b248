// Loading, and the states of items.
#include "viewer/menu.h"

#include "viewer/commands.h"
#include "viewer/view/color_maps.h"

namespace talview {

HMENU loadMenu() {
    const HMENU menu = LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_MENU));
    const HMENU maps = CreatePopupMenu(); // the menu's own from here on
    InsertMenuW(menu, COMMAND_MAP, MF_BYCOMMAND | MF_POPUP, reinterpret_cast<UINT_PTR>(maps),
                L"Colour &maps");
    int command = COMMAND_FIRST_MAP;
    for (const ColorMap& map : colorMaps()) {
        AppendMenuW(maps, MF_STRING, command++, map.name);
    }
    return menu;
}

void updateMenu(HMENU part, const std::function<CommandState(int command)>& stateOf) {
    const int count = GetMenuItemCount(part);
    for (int at = 0; at < count; ++at) {
        const UINT command = GetMenuItemID(part, at);
        if (command == 0 || command == static_cast<UINT>(-1)) {
            continue; // a separator, or a submenu
        }
        const CommandState state = stateOf(static_cast<int>(command));
        EnableMenuItem(part, at, MF_BYPOSITION | (state.isEnabled ? MF_ENABLED : MF_GRAYED));
        CheckMenuItem(part, at, MF_BYPOSITION | (state.isChecked ? MF_CHECKED : MF_UNCHECKED));
    }
}

} // namespace talview
