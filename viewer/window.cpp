// Window messages into events.
#include "viewer/window.h"

#include "viewer/commands.h"
#include "viewer/menu.h"

#include <shellapi.h>
#include <windowsx.h>

#include <algorithm>
#include <cmath>

namespace talview {
namespace {

constexpr UINT wakeMessage = WM_APP;

} // namespace

Window::Window(long width, long height, talxrend::Guard& failure)
    : NativeWindow(L"talview", WS_OVERLAPPEDWINDOW, {width, height}, failure), failure_(failure),
      status_(handle()) {
    DragAcceptFiles(handle(), TRUE);
    SetMenu(handle(), loadMenu());
    setClientSize(width, height);
}

Window::~Window() {
    detach();
}

// What the frame takes is known only when there is room for all of it: the menu takes more rows where it is
// narrow, and the status line joins at the first step.
void Window::setClientSize(long width, long height) {
    for (int i = 0; i < 10; ++i) {
        RECT frame{};
        GetWindowRect(handle(), &frame);
        const RECT inner = client();
        if (i > 0 && inner.right == width && inner.bottom == height) {
            break;
        }
        SetWindowPos(handle(), nullptr, 0, 0, frame.right - frame.left + width - inner.right,
                     frame.bottom - frame.top + height - inner.bottom,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
    }
}

void Window::show(bool isMaximised) {
    ShowWindow(handle(), isMaximised ? SW_SHOWMAXIMIZED : SW_SHOWNORMAL);
    UpdateWindow(handle());
    run(0.2); // the system puts a new window on the screen in its own time
}

void Window::wake() const {
    PostMessageW(handle(), wakeMessage, 0, 0);
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

void Window::setFullScreen(bool isFull) {
    if (isFull == isFullScreen_) {
        return;
    }
    const auto style = [&](LONG_PTR bits) {
        SetWindowLongPtrW(handle(), GWL_STYLE, bits | (IsWindowVisible(handle()) ? WS_VISIBLE : 0));
    };
    isFullScreen_ = isFull;
    if (isFull) {
        windowed_.length = sizeof windowed_;
        GetWindowPlacement(handle(), &windowed_);
        menu_ = GetMenu(handle());
        SetMenu(handle(), nullptr);
        style(WS_POPUP);
        coverMonitor();
    } else {
        style(WS_OVERLAPPEDWINDOW);
        SetMenu(handle(), menu_);
        SetWindowPlacement(handle(), &windowed_);
        SetWindowPos(handle(), nullptr, 0, 0, 0, 0,
                     SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_FRAMECHANGED);
    }
}

void Window::coverMonitor() const {
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(handle(), MONITOR_DEFAULTTONEAREST), &monitor);
    const RECT& all = monitor.rcMonitor;
    SetWindowPos(handle(), HWND_TOP, all.left, all.top, all.right - all.left, all.bottom - all.top,
                 SWP_FRAMECHANGED);
}

POINT Window::aim() const {
    const RECT inner = client();
    return pointer().value_or(lastInside_.value_or(POINT{inner.right / 2, inner.bottom / 2}));
}

LRESULT Window::answer(UINT message, WPARAM wParam, LPARAM lParam) {
    if (!events_) {
        return answerFrame(message, wParam, lParam);
    }
    if (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST) {
        return answerMouse(message, wParam, {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
    }
    switch (message) {
    case WM_CLOSE:
        if (events_->mayClose()) {
            PostQuitMessage(0);
        }
        return 0;
    case WM_QUERYENDSESSION:
        return events_->mayClose();
    case WM_ENDSESSION:
        if (wParam) {
            events_->sessionEnds();
        }
        return 0;
    case WM_PAINT:
        paint();
        return 0;
    case WM_SIZE:
        events_->resized();
        return 0;
    case WM_MOVE:
    case WM_MOUSELEAVE:
        if (const auto at = pointer()) {
            events_->moved(*at);
        } else {
            events_->left();
        }
        return 0;
    case WM_CAPTURECHANGED:
        events_->released();
        return 0;
    case WM_INITMENUPOPUP:
        updateMenu(reinterpret_cast<HMENU>(wParam), [this](int id) { return events_->stateOf(id); });
        return 0;
    case WM_COMMAND:
        events_->command(LOWORD(wParam));
        return 0;
    case WM_DROPFILES:
        drop(reinterpret_cast<HDROP>(wParam));
        return 0;
    case wakeMessage:
        events_->woken();
        return 0;
    case WM_QUERYNEWPALETTE:
        events_->paletteChanged();
        return TRUE;
    case WM_PALETTECHANGED:
        if (reinterpret_cast<HWND>(wParam) != handle()) {
            events_->paletteChanged();
        }
        return 0;
    case WM_DISPLAYCHANGE:
        if (isFullScreen_) {
            coverMonitor();
        }
        events_->displayChanged();
        return 0;
    case WM_DPICHANGED:
        changeDpi(*reinterpret_cast<const RECT*>(lParam));
        return 0;
    }
    return answerFrame(message, wParam, lParam);
}

LRESULT Window::answerMouse(UINT message, WPARAM wParam, POINT at) {
    switch (message) {
    case WM_LBUTTONDOWN:
        press(MouseButton::left, wParam, at);
        return 0;
    case WM_MBUTTONDOWN:
        press(MouseButton::middle, wParam, at);
        return 0;
    case WM_RBUTTONDOWN:
        press(MouseButton::right, wParam, at);
        return 0;
    case WM_LBUTTONUP:
    case WM_MBUTTONUP:
    case WM_RBUTTONUP:
        ReleaseCapture();
        return 0;
    case WM_MOUSEWHEEL:
        ScreenToClient(handle(), &at);
        events_->wheel(at, GET_WHEEL_DELTA_WPARAM(wParam) / double{WHEEL_DELTA});
        return 0;
    case WM_MOUSEMOVE:
        moveTo(at);
        return 0;
    }
    return DefWindowProcW(handle(), message, wParam, MAKELPARAM(at.x, at.y));
}

void Window::press(MouseButton button, WPARAM keys, POINT at) {
    SetCapture(handle());
    events_->pressed(button, at, (keys & MK_SHIFT) != 0);
}

void Window::moveTo(POINT at) {
    TRACKMOUSEEVENT leaving{sizeof leaving, TME_LEAVE, handle(), 0};
    TrackMouseEvent(&leaving);
    lastInside_ = at;
    events_->moved(at);
}

// The status line is part of the frame, as a menu is, and not a child window: Wine shows nothing that
// DirectDraw draws on a child window or on one that has children.
LRESULT Window::answerFrame(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_ERASEBKGND) {
        return 1;
    }
    const LRESULT result = DefWindowProcW(handle(), message, wParam, lParam);
    if (isFullScreen_) {
        return result;
    }
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
    events_->paint(paint.rcPaint);
}

void Window::drop(HDROP files) {
    std::wstring path(DragQueryFileW(files, 0, nullptr, 0), L'\0');
    DragQueryFileW(files, 0, path.data(), static_cast<UINT>(path.size() + 1));
    DragFinish(files);
    if (!path.empty()) {
        events_->dropped(path);
    }
}

void Window::changeDpi(const RECT& proposed) {
    status_.resolutionChanged();
    if (events_) {
        events_->dpiChanged();
    }
    SetWindowPos(handle(), nullptr, proposed.left, proposed.top, proposed.right - proposed.left,
                 proposed.bottom - proposed.top, SWP_NOZORDER | SWP_NOACTIVATE | SWP_FRAMECHANGED);
}

} // namespace talview
