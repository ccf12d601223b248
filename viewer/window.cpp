// Window messages into calls of the scene.
#include "viewer/window.h"

#include "viewer/commands.h"

#include <shellapi.h>
#include <windowsx.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace talview {

Window::Window(long width, long height, talxrend::Guard& failure, Events events)
    : NativeWindow(L"talview", WS_OVERLAPPEDWINDOW, {width, height}, failure), failure_(failure),
      events_(std::move(events)), status_(handle()) {
    DragAcceptFiles(handle(), TRUE);
    // What the frame takes is known only when there is room for all of it; the status line joins it at the
    // first step.
    for (int i = 0; i < 3; ++i) {
        RECT frame{};
        GetWindowRect(handle(), &frame);
        const RECT inner = client();
        SetWindowPos(handle(), nullptr, 0, 0, frame.right - frame.left + width - inner.right,
                     frame.bottom - frame.top + height - inner.bottom,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    }
}

Window::~Window() {
    detach();
}

void Window::show() {
    ShowWindow(handle(), SW_SHOWNORMAL);
    UpdateWindow(handle());
    run(0.2); // the system puts a new window on the screen in its own time
}

void Window::run(std::optional<double> seconds) {
    constexpr UINT_PTR timer = 1;
    if (seconds) {
        SetTimer(handle(), timer, static_cast<UINT>(std::lround(*seconds * 1000)), nullptr);
    }
    const HACCEL keys = LoadAcceleratorsW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(COMMANDS));
    MSG message;
    while (!failure_.holdsFailure() && !closed_ && GetMessageW(&message, nullptr, 0, 0) != -1) {
        if (message.message == WM_TIMER && message.hwnd == handle() && message.wParam == timer) {
            KillTimer(handle(), timer);
            break;
        }
        closed_ = message.message == WM_QUIT;
        if (!TranslateAcceleratorW(handle(), keys, &message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    failure_.rethrow();
}

std::optional<POINT> Window::pointer() const {
    POINT at{};
    if (!GetCursorPos(&at) || WindowFromPoint(at) != handle()) {
        return std::nullopt;
    }
    ScreenToClient(handle(), &at);
    const RECT inner = client();
    return PtInRect(&inner, at) ? std::optional(at) : std::nullopt;
}

LRESULT Window::answer(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        PostQuitMessage(0);
        return 0;
    }
    if (!scene_) {
        return answerFrame(message, wParam, lParam);
    }
    POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    switch (message) {
    case WM_PAINT:
        paint();
        return 0;
    case WM_SIZE:
        scene_->resize();
        return 0;
    case WM_MOVE:
    case WM_MOUSELEAVE:
        events_.changed();
        return 0;
    case WM_COMMAND:
        events_.command(LOWORD(wParam));
        return 0;
    case WM_DROPFILES:
        drop(reinterpret_cast<HDROP>(wParam));
        return 0;
    case WM_QUERYNEWPALETTE:
        scene_->paletteChanged();
        return TRUE;
    case WM_PALETTECHANGED:
        if (reinterpret_cast<HWND>(wParam) != handle()) {
            scene_->paletteChanged();
        }
        return 0;
    case WM_MOUSEWHEEL:
        status_.tell(L"");
        ScreenToClient(handle(), &point);
        scene_->zoomAbout(point, std::pow(zoomStep, GET_WHEEL_DELTA_WPARAM(wParam) / double{WHEEL_DELTA}));
        return 0;
    case WM_LBUTTONDOWN:
        status_.tell(L"");
        SetCapture(handle());
        dragged_ = point;
        return 0;
    case WM_LBUTTONUP:
        ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        dragged_.reset();
        return 0;
    case WM_MOUSEMOVE:
        mouseMoved(point);
        return 0;
    }
    return answerFrame(message, wParam, lParam);
}

// The status line is part of the frame, as a menu is, and not a child window: Wine shows nothing that
// DirectDraw draws on a child window or on one that has children.
LRESULT Window::answerFrame(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ERASEBKGND) {
        return 1;
    }
    const LRESULT result = DefWindowProcW(handle(), message, wParam, lParam);
    switch (message) {
    case WM_NCCALCSIZE: {
        RECT& inner = *reinterpret_cast<RECT*>(lParam); // of both structures that it may be
        inner.bottom = std::max(inner.top, inner.bottom - status_.height());
        break;
    }
    case WM_NCPAINT:
    case WM_NCACTIVATE:
    case WM_SETTEXT:
        status_.paint();
        break;
    }
    return result;
}

void Window::paint() {
    PAINTSTRUCT paint;
    BeginPaint(handle(), &paint);
    EndPaint(handle(), &paint);
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    if (scene_->compose()) {
        scene_->refresh(scene_->extent());
        drawingMilliseconds_ = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
        ++drawings_;
    } else {
        scene_->refresh(paint.rcPaint);
    }
    events_.changed();
}

void Window::drop(HDROP files) const {
    std::wstring path(DragQueryFileW(files, 0, nullptr, 0), L'\0');
    DragQueryFileW(files, 0, path.data(), static_cast<UINT>(path.size() + 1));
    DragFinish(files);
    if (!path.empty()) {
        events_.dropped(path);
    }
}

void Window::mouseMoved(POINT to) {
    if (dragged_) {
        scene_->move(to.x - dragged_->x, to.y - dragged_->y);
        dragged_ = to;
    }
    TRACKMOUSEEVENT leaving{sizeof leaving, TME_LEAVE, handle(), 0};
    TrackMouseEvent(&leaving);
    events_.changed();
}

} // namespace talview
