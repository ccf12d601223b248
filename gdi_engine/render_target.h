// Where RefreshScreen copies to: the engine's window, a device context of the owner's, or a picture's bitmap.
#pragma once

#include "render/gdi_handles.h"

#include <variant>

namespace talx {

class RenderTarget {
public:
    // Back to the window. A memory device context made for a picture is deleted.
    void setWindow() { target_ = std::monostate{}; }
    // The owner's device context, used as it is; null is the window.
    void setDc(HDC dc);
    // A memory device context with the bitmap selected into it; the bitmap stays the owner's. False, and the
    // window, when there is no device context.
    bool setBitmap(HBITMAP bitmap);

    // The device context to copy to; null for the window.
    [[nodiscard]] HDC dc() const;

private:
    // The bitmap is selected back out before the device context is deleted.
    struct Picture {
        UniqueMemoryDc dc;
        SelectedBitmap bitmap;
    };

    std::variant<std::monostate, HDC, Picture> target_;
};

} // namespace talx
