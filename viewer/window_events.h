// What the window tells its owner.
#pragma once

#include "viewer/menu.h"
#include "viewer/view/pointer_input.h"

#include <windows.h>

#include <string>

namespace talview {

class WindowEvents {
public:
    virtual void command(int id) = 0; // one of commands.h, by its key or from the menu
    [[nodiscard]] virtual CommandState stateOf(int id) const = 0; // for the menu
    virtual void dropped(const std::wstring& path) = 0;           // a file on the window
    virtual void woken() = 0;                      // Window::wake was called, on whatever thread
    virtual void paint(const RECT& uncovered) = 0; // the damage, and what the screen has lost
    virtual void resized() = 0;
    virtual void paletteChanged() = 0;
    virtual void displayChanged() = 0;         // the screen has other colours or another size
    virtual void dpiChanged() = 0;             // the window is on a monitor of another resolution
    [[nodiscard]] virtual bool mayClose() = 0; // false: the person does not want to after all
    virtual void sessionEnds() = 0;            // the process will be ended

    // Places are pixels of the view.
    virtual void pressed(MouseButton button, POINT at, bool shift) = 0;
    virtual void moved(POINT to) = 0;
    virtual void left() = 0; // the pointer is elsewhere
    virtual void released() = 0;
    virtual void wheel(POINT at, double notches) = 0;

protected:
    WindowEvents() = default;
    ~WindowEvents() = default;
    WindowEvents(const WindowEvents&) = default;
    WindowEvents& operator=(const WindowEvents&) = default;
};

} // namespace talview
