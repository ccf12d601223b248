// A DIB section and the header that describes it; the composition bitmap and the pictures made for render
// targets.
#pragma once

#include "render/gdi_handles.h"
#include "render/pixels/pixel_format.h"

namespace talx {

// The format of the screen; Unspecified for one that the engine cannot write.
[[nodiscard]] PixelFormat screenFormat();

class DibRecord {
public:
    DibRecord();

    // Describes pixels of a format; a value that is none of the known formats leaves the header without a
    // bit count.
    void setFormat(PixelFormat format);
    // Size in pixels; rows are stored top down.
    void setSize(long width, long height);

    // The format that the header describes: the one that the bitmap is asked for in, or the one that it could
    // be made in instead.
    [[nodiscard]] PixelFormat headerFormat() const;

    // Makes the bitmap; an 8-bit one takes its colours from the palette if there is one. False when it cannot
    // be made as large as the header says, or when there is one already.
    bool create(HPALETTE palette);
    // Deletes the bitmap, which must not be selected anywhere.
    void destroy();
    // Hands the bitmap over.
    [[nodiscard]] UniqueBitmap release() { return std::move(bitmap_); }
    [[nodiscard]] HBITMAP bitmap() const { return bitmap_.get(); }
    // Its pixels, in its own format; none without a bitmap.
    [[nodiscard]] const BufferBits& bits() const { return bits_; }

    // Copies the palette's colours into the header's colour table.
    void loadColors(HPALETTE palette);
    [[nodiscard]] const RGBQUAD* colors() const { return info_.colors; }

private:
    // Header and colour table as GDI reads them: one BITMAPINFO.
    struct Info {
        BITMAPV4HEADER header;
        RGBQUAD colors[256];
    };

    [[nodiscard]] bool hasValidSize() const;
    [[nodiscard]] bool createSection();

    Info info_{};
    UniqueBitmap bitmap_;
    BufferBits bits_; // of it
};

} // namespace talx
