// The window that shows a scene, with a status line below the picture, and its messages.
//
// Wheel and mouse only change where the scene's image lies. The scene is drawn when the system asks for a
// repaint, which it does when no more messages wait: so steps that come faster than they can be drawn are
// drawn together.
#pragma once

#include "viewer/native_window.h"
#include "viewer/scene/scene.h"
#include "viewer/status_line.h"

#include <shellapi.h>

#include <functional>
#include <optional>

namespace talview {

class Window final : public NativeWindow {
public:
    struct Events {
        std::function<void(const std::wstring& path)> dropped; // a file on the window
        std::function<void(int)> command;                      // one of commands.h, by its key
        std::function<void()> changed; // something has been drawn, or the pointer has moved
    };

    // A hidden window whose client area, which the picture fills, has the given size in pixels.
    Window(long width, long height, talxrend::Guard& failure, Events events);
    ~Window() override;

    // The scene that is shown from now on.
    void attach(Scene* scene) { scene_ = scene; }
    [[nodiscard]] StatusLine& status() { return status_; }

    // Makes the window visible, painted by the scene, and returns once it is.
    void show();
    // Handles messages until the window is closed, the time is over or one failed. Throws its failure.
    void run(std::optional<double> seconds);

    // Where the pointer is, in pixels of the view; none if it is elsewhere.
    [[nodiscard]] std::optional<POINT> pointer() const;
    // What the last drawing of the whole scene took, and how many there have been.
    [[nodiscard]] double drawingMilliseconds() const { return drawingMilliseconds_; }
    [[nodiscard]] long drawings() const { return drawings_; }

private:
    LRESULT answer(UINT message, WPARAM wParam, LPARAM lParam) override;
    LRESULT answerFrame(UINT message, WPARAM wParam, LPARAM lParam);
    void paint();
    void drop(HDROP files) const;
    void mouseMoved(POINT to);

    talxrend::Guard& failure_;
    Events events_;
    StatusLine status_;
    Scene* scene_ = nullptr;
    std::optional<POINT> dragged_; // where the pointer was while the left button is down
    double drawingMilliseconds_ = 0;
    long drawings_ = 0;
    bool closed_ = false;
};

} // namespace talview
