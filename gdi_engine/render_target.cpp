// See render_target.h.

#include "gdi_engine/render_target.h"

namespace talx {

void RenderTarget::setDc(HDC dc) {
    setWindow();
    if (dc) {
        target_ = dc;
    }
}

bool RenderTarget::setBitmap(HBITMAP bitmap) {
    // Deselects the bitmap of a previous picture: it may be the very one to be selected now, and a bitmap can
    // be selected into one device context only.
    setWindow();
    const WindowDc screen(nullptr);
    UniqueMemoryDc dc(screen.get() ? CreateCompatibleDC(screen.get()) : nullptr);
    if (!dc) {
        return false;
    }
    SelectedBitmap selected;
    selected.select(dc.get(), bitmap); // a picture whose bitmap cannot be selected is drawn nowhere
    target_.emplace<Picture>(Picture{std::move(dc), std::move(selected)});
    return true;
}

HDC RenderTarget::dc() const {
    if (const HDC* owned = std::get_if<HDC>(&target_)) {
        return *owned;
    }
    const Picture* picture = std::get_if<Picture>(&target_);
    return picture ? picture->dc.get() : nullptr;
}

} // namespace talx
