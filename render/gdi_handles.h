// Owners of GDI handles: each gives its handle back when it goes.
#pragma once

#include <memory>
#include <type_traits>
#include <utility>
#include <windows.h>

namespace talx {

struct ObjectDeleter {
    void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
struct DcDeleter {
    void operator()(HDC dc) const { DeleteDC(dc); }
};

using UniqueBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, ObjectDeleter>;
using UniqueBrush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, ObjectDeleter>;
using UniquePalette = std::unique_ptr<std::remove_pointer_t<HPALETTE>, ObjectDeleter>;
using UniqueMemoryDc = std::unique_ptr<std::remove_pointer_t<HDC>, DcDeleter>;

// The device context of a window, or of the screen for a null window, for the length of a scope. May be null.
class WindowDc {
public:
    explicit WindowDc(HWND window) : window_(window), dc_(GetDC(window)) {}
    ~WindowDc() {
        if (dc_) {
            ReleaseDC(window_, dc_);
        }
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;

    [[nodiscard]] HDC get() const { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

// A bitmap selected into a memory device context; what it replaced is selected back at the end. The context
// must live longer.
class SelectedBitmap {
public:
    SelectedBitmap() = default;
    SelectedBitmap(SelectedBitmap&& other) noexcept
        : dc_(other.dc_), saved_(std::exchange(other.saved_, nullptr)) {}
    SelectedBitmap& operator=(SelectedBitmap&&) = delete;
    ~SelectedBitmap() { deselect(); }

    // Ends the selection that there is, and makes this one. False when the bitmap cannot be selected.
    bool select(HDC dc, HBITMAP bitmap) {
        deselect();
        dc_ = dc;
        saved_ = SelectObject(dc, bitmap);
        return saved_ != nullptr;
    }
    void deselect() {
        if (saved_) {
            SelectObject(dc_, std::exchange(saved_, nullptr));
        }
    }

private:
    HDC dc_ = nullptr;
    HGDIOBJ saved_ = nullptr;
};

// A palette selected into a device context for the length of a scope; what it replaced is selected back at
// the end.
class SelectedPalette {
public:
    SelectedPalette(HDC dc, HPALETTE palette) : dc_(dc), saved_(SelectPalette(dc, palette, FALSE)) {}
    ~SelectedPalette() {
        if (saved_) {
            SelectPalette(dc_, saved_, FALSE);
        }
    }
    SelectedPalette(const SelectedPalette&) = delete;
    SelectedPalette& operator=(const SelectedPalette&) = delete;

    // Maps its colours to the system palette.
    void realize() const { RealizePalette(dc_); }

private:
    HDC dc_;
    HPALETTE saved_;
};

} // namespace talx
