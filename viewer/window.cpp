// Window messages into calls of the scene.
#include "viewer/window.h"

#include "viewer/failure.h"

#include <windowsx.h>

#include <cmath>
#include <utility>

namespace talview {
namespace {

constexpr wchar_t className[] = L"talview";
constexpr double zoomStep = 1.25;

[[noreturn]] void throwLastError(const char* what) {
    check(HRESULT_FROM_WIN32(GetLastError()), what);
    throw Failure(what);
}

} // namespace

Window::Window(long width, long height, const std::wstring& title) {
    const HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_CROSS);
    windowClass.lpszClassName = className;
    if (!RegisterClassW(&windowClass)) {
        throwLastError("cannot register the window class");
    }
    RECT frame{0, 0, width, height};
    AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0);
    window_ =
        CreateWindowExW(0, className, title.c_str(), WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                        frame.right - frame.left, frame.bottom - frame.top, nullptr, nullptr, instance, this);
    if (!window_) {
        throwLastError("cannot create the window");
    }
}

Window::~Window() {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

void Window::show(Scene& scene) {
    scene_ = &scene;
    ShowWindow(window_, SW_SHOWNORMAL);
    UpdateWindow(window_);
    run(0.2); // the system puts a new window on the screen in its own time
}

void Window::run(std::optional<double> seconds) {
    constexpr UINT_PTR timer = 1;
    if (seconds) {
        SetTimer(window_, timer, static_cast<UINT>(std::lround(*seconds * 1000)), nullptr);
    }
    MSG message;
    while (!failure_ && !closed_ && GetMessageW(&message, nullptr, 0, 0) != -1) {
        if (message.message == WM_TIMER) {
            KillTimer(window_, timer);
            break;
        }
        closed_ = message.message == WM_QUIT;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    if (failure_) {
        std::rethrow_exception(std::exchange(failure_, nullptr));
    }
}

LRESULT CALLBACK Window::windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        void* self = reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        static_cast<Window*>(self)->window_ = window;
    }
    if (message == WM_GETMINMAXINFO) {
        // The client area may be smaller than a title bar and larger than the screen. This message comes
        // before any other, to a window that is still being made.
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        info->ptMinTrackSize = {1, 1};
        info->ptMaxTrackSize = {32767, 32767};
        return 0;
    }
    auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    // No exception may cross the system's code: it is kept for the message loop.
    try {
        return self->handle(message, wParam, lParam);
    } catch (...) {
        self->failure_ = std::current_exception();
        return 0;
    }
}

LRESULT Window::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        PostQuitMessage(0);
        return 0;
    case WM_ERASEBKGND:
        return 1;
    }
    if (!scene_ || failure_) {
        return DefWindowProcW(window_, message, wParam, lParam);
    }
    POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        BeginPaint(window_, &paint);
        EndPaint(window_, &paint);
        scene_->refresh(paint.rcPaint);
        return 0;
    }
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED && LOWORD(lParam) > 0 && HIWORD(lParam) > 0) {
            scene_->resize(LOWORD(lParam), HIWORD(lParam));
        }
        return 0;
    case WM_QUERYNEWPALETTE:
        scene_->paletteChanged();
        return TRUE;
    case WM_PALETTECHANGED:
        if (reinterpret_cast<HWND>(wParam) != window_) {
            scene_->paletteChanged();
        }
        return 0;
    case WM_MOUSEWHEEL:
        ScreenToClient(window_, &point);
        scene_->zoomAbout(point, std::pow(zoomStep, GET_WHEEL_DELTA_WPARAM(wParam) / double{WHEEL_DELTA}));
        scene_->pointAt(point);
        return 0;
    case WM_LBUTTONDOWN:
        SetCapture(window_);
        pointer_ = point;
        return 0;
    case WM_LBUTTONUP:
        ReleaseCapture();
        return 0;
    case WM_MOUSEMOVE:
        handleMouseMove(point, GetCapture() == window_);
        return 0;
    case WM_CHAR:
        handleKey(wParam);
        return 0;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

void Window::handleMouseMove(POINT to, bool dragging) {
    if (dragging) {
        scene_->move(to.x - pointer_.x, to.y - pointer_.y);
    }
    pointer_ = to;
    scene_->pointAt(to);
}

void Window::handleKey(WPARAM key) {
    const RECT view = scene_->extent();
    const POINT middle{view.right / 2, view.bottom / 2};
    switch (key) {
    case L'+':
        return scene_->zoomAbout(middle, zoomStep);
    case L'-':
        return scene_->zoomAbout(middle, 1 / zoomStep);
    case L'f':
        return scene_->fit();
    case L'm':
        return scene_->nextMethod();
    case L'c':
        return scene_->nextMap();
    case VK_ESCAPE:
        PostQuitMessage(0);
    }
}

} // namespace talview
