// The engine's device context, copied.
#include "viewer/share/view_bitmap.h"

namespace talview {

talxrend::GdiOwner<HBITMAP> viewBitmap(Scene& scene) {
    scene.compose();
    const RECT view = scene.extent();
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = view.right;
    info.bmiHeader.biHeight = view.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* bits = nullptr;
    talxrend::GdiOwner<HBITMAP> bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    talxrend::check(bitmap ? S_OK : E_OUTOFMEMORY, "cannot make a bitmap of the view's size");
    const talxrend::GdiOwner<HDC> dc(CreateCompatibleDC(nullptr));
    const talxrend::Selected selected(dc.get(), bitmap.get());
    talxrend::DrawContext source(scene.engine(), 0, view);
    const bool isCopied = BitBlt(dc.get(), 0, 0, view.right, view.bottom, source, 0, 0, SRCCOPY);
    source.end();
    talxrend::check(isCopied ? S_OK : E_FAIL, "cannot read the engine's pixels");
    GdiFlush();
    return bitmap;
}

} // namespace talview
