// Window messages into calls of the scene.
#include "viewer/window.h"

#include <windowsx.h>

#include <cmath>

namespace talview {
namespace {

constexpr wchar_t className[] = L"talview";
constexpr double zoomStep = 1.25;

[[noreturn]] void throwLastError(const char* what) {
    throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), what);
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
    while (!failure_.holdsFailure() && !closed_ && GetMessageW(&message, nullptr, 0, 0) != -1) {
        if (message.message == WM_TIMER) {
            KillTimer(window_, timer);
            break;
        }
        closed_ = message.message == WM_QUIT;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    failure_.rethrow();
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
    return self->failure_.run([&] { return self->handle(message, wParam, lParam); });
}

LRESULT Window::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_CLOSE:
        PostQuitMessage(0);
        return 0;
    case WM_ERASEBKGND:
        return 1;
    }
    if (!scene_ || failure_.holdsFailure()) {
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
        scene_->resize();
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
