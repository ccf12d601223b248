// The window that shows the picture, with a status line below it, and its messages.
//
// Input only changes the state of the view. What is damaged is drawn when the system asks for a repaint,
// which it does when no more messages wait: so steps that come faster than they can be drawn are drawn
// together.
#pragma once

#include "viewer/native_window.h"
#include "viewer/status_line.h"
#include "viewer/window_events.h"

#include <shellapi.h>

#include <optional>

namespace talview {

class Window final : public NativeWindow {
public:
    // A hidden window whose client area, which the picture fills, has the given size in pixels.
    Window(long width, long height, talxrend::Guard& failure);
    ~Window() override;

    // Whom the window tells what happens from now on; null: nobody.
    void attach(WindowEvents* events) { events_ = events; }
    [[nodiscard]] StatusLine& status() { return status_; }

    // Makes the window visible, painted, and returns once it is.
    void show(bool isMaximised);
    // Handles messages until the window is closed, the time is over or one failed. Throws its failure.
    void run(std::optional<double> seconds);
    // Asks for WindowEvents::paint, once no other message waits.
    void repaint() const { RedrawWindow(handle(), nullptr, nullptr, RDW_INTERNALPAINT); }
    // Asks for WindowEvents::woken; from any thread.
    void wake() const;

    // The picture alone, on the whole of its monitor.
    void setFullScreen(bool isFull);
    [[nodiscard]] bool isFullScreen() const { return isFullScreen_; }

    // Where the pointer is, in pixels of the view; none if it is elsewhere.
    [[nodiscard]] std::optional<POINT> pointer() const;
    // What a command is aimed at: where the pointer is, or for one from the menu, where it was on its way
    // there; otherwise the middle of the view.
    [[nodiscard]] POINT aim() const;
    void aimAtMiddle() { lastInside_.reset(); } // unless the pointer is in the view

private:
    LRESULT answer(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT answerMouse(UINT message, WPARAM wParam, POINT at);
    LRESULT answerFrame(UINT message, WPARAM wParam, LPARAM lParam);
    void setClientSize(long width, long height);
    void press(MouseButton button, WPARAM keys, POINT at);
    void moveTo(POINT at);
    void paint();
    void drop(HDROP files);
    void coverMonitor() const;
    void changeDpi(const RECT& proposed);

    talxrend::Guard& failure_;
    WindowEvents* events_ = nullptr;
    StatusLine status_;
    bool isFullScreen_ = false;
    WINDOWPLACEMENT windowed_{};      // where it is when it is not on the whole screen
    HMENU menu_ = nullptr;            // meanwhile; the window's own
    std::optional<POINT> lastInside_; // where the pointer was last, in the view
    bool closed_ = false;
};

} // namespace talview
