// A window of the system's whose messages a class answers.
#pragma once

#include <talxrend.hpp>

namespace talview {

class NativeWindow {
public:
    NativeWindow(const NativeWindow&) = delete;
    NativeWindow& operator=(const NativeWindow&) = delete;

    [[nodiscard]] HWND handle() const { return window_; }
    // The client area, from (0, 0).
    [[nodiscard]] RECT client() const;

protected:
    // Makes a hidden window of a class of its own. An exception must not cross the system's code: what answer
    // throws is kept in failure, which outlives this.
    NativeWindow(const wchar_t* className, DWORD style, SIZE size, talxrend::Guard& failure);
    virtual ~NativeWindow();

    // Answers one message; not called while the window is made, nor once something is kept in failure.
    virtual LRESULT answer(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    // From now on the system answers; to be called first by the destructor of whoever implements answer.
    void detach();

private:
    static LRESULT CALLBACK windowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    talxrend::Guard& failure_;
    HWND window_;
};

} // namespace talview
