// Window classes, and the way from a handle to its object.
#include "viewer/native_window.h"

#include "viewer/commands.h"

namespace talview {

NativeWindow::NativeWindow(const wchar_t* className, DWORD style, SIZE size, talxrend::Guard& failure)
    : failure_(failure) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = windowProc;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hIcon = LoadIconW(windowClass.hInstance, MAKEINTRESOURCEW(IDR_ICON));
    windowClass.hCursor = LoadCursorW(nullptr, IDC_CROSS);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass); // fails the second time only
    window_ = CreateWindowExW(0, className, L"", style, CW_USEDEFAULT, CW_USEDEFAULT, size.cx, size.cy,
                              nullptr, nullptr, windowClass.hInstance, nullptr);
    if (!window_) {
        throw talxrend::Failure(HRESULT_FROM_WIN32(GetLastError()), "cannot create a window");
    }
    SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
}

NativeWindow::~NativeWindow() {
    detach();
    DestroyWindow(window_);
}

void NativeWindow::detach() {
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
}

RECT NativeWindow::client() const {
    RECT client{};
    GetClientRect(window_, &client);
    return client;
}

LRESULT CALLBACK NativeWindow::windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_GETMINMAXINFO) {
        // The client area may be smaller than a title bar and larger than the screen. This message comes
        // before any other, to a window that is still being made.
        auto* info = reinterpret_cast<MINMAXINFO*>(lParam);
        info->ptMinTrackSize = {1, 1};
        info->ptMaxTrackSize = {32767, 32767};
        return 0;
    }
    auto* self = reinterpret_cast<NativeWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self || self->failure_.holdsFailure()) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    return self->failure_.run([&] { return self->answer(message, wParam, lParam); });
}

} // namespace talview
