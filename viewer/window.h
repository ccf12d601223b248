// The window that shows a scene, and its messages.
#pragma once

#include "viewer/scene.h"

namespace talview {

class Window {
public:
    // A hidden window whose client area has the given size in pixels.
    Window(long width, long height, const std::wstring& title);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    [[nodiscard]] HWND handle() const { return window_; }

    // Makes the window visible, painted by the scene, and returns once it is. The scene gets the window's
    // messages from now on; no message is handled once it is gone.
    void show(Scene& scene);

    // Handles messages until the window is closed or the time is over. Throws what the scene threw.
    void run(std::optional<double> seconds);

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);
    void handleKey(WPARAM key);
    void handleMouseMove(POINT to, bool dragging);

    HWND window_ = nullptr;
    Scene* scene_ = nullptr;
    POINT pointer_{};
    bool closed_ = false;
    talxrend::Guard failure_;
};

} // namespace talview
