// See transfer.h.

#include "render/transfer.h"

#include "render/pixels/row_converters.h"

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

// One drawing: where the pixels come from and where they go.
struct Transfer {
    const BufferBits& bits;
    Rect target; // inside the buffer and the image
    long x;      // buffer position of the image's pixel (0, 0)
    long y;
    const ImagePlanes& planes;
    ColorState& colors;

    [[nodiscard]] PixelRows destination() const { return {bits.at(target.left, target.top), bits.stride}; }
    [[nodiscard]] ConstPixelRows source(int plane, int bytesPerPel) const {
        const PlaneView& view = planes[plane];
        const std::int64_t column = std::int64_t{target.left} - x;
        const std::int64_t row = std::int64_t{target.top} - y;
        return {view.data + row * view.stride + column * bytesPerPel, view.stride};
    }
    [[nodiscard]] Extent extent() const { return target.extent(); }
};

// The owner's mask colour as an entry of a format's table.
template <PixelFormat Format>
TableEntry<Format> maskPixel(OLE_COLOR word);
template <>
std::uint16_t maskPixel<PixelFormat::Rgb15>(OLE_COLOR word) {
    return maskPixel15(word);
}
template <>
std::uint16_t maskPixel<PixelFormat::Rgb16>(OLE_COLOR word) {
    return maskPixel16(word);
}
template <>
ColorEntry maskPixel<PixelFormat::Rgb24>(OLE_COLOR word) {
    return maskPixel24(word);
}
template <>
std::uint32_t maskPixel<PixelFormat::Rgb32>(OLE_COLOR word) {
    return word;
}

template <PixelFormat Format>
void drawGrey8(const Transfer& t) {
    convertGrey8(t.destination(), t.source(0, 1), t.extent(), t.colors.grey8Map.table<Format>());
}

template <PixelFormat Format>
void drawColor(const Transfer& t) {
    convertColor(Format, t.destination(), t.source(0, 1), t.source(1, 1), t.source(2, 1), t.extent());
}

template <PixelFormat Format>
void drawGrey16(const Transfer& t) {
    ColorMap16& map = t.colors.grey16Map;
    map.setSize(tableSizeOfDepthCode(t.planes.depthCode()));
    convertGrey16(t.destination(), t.source(0, 2), t.extent(), map.table<Format>(), map.maxValue());
}

template <PixelFormat Format>
void drawRange16(const Transfer& t) {
    ColorMap16& map = t.colors.range16Map;
    map.setSize(65536);
    if (t.colors.visiblePixelMaskEnable && t.planes.count() > 1) {
        convertMaskedRange16(t.destination(), t.source(0, 2), t.source(1, 1), t.extent(), map.table<Format>(),
                             map.maxValue(), maskPixel<Format>(t.colors.visiblePixelMaskColor));
    } else {
        convertGrey16(t.destination(), t.source(0, 2), t.extent(), map.table<Format>(), map.maxValue());
    }
}

template <PixelFormat Format>
void drawKind(const ImageOfKind& kind, const Transfer& t) {
    std::visit(ForKind{
                   [&t](const ComPtr<ITalImage8Grey>&) { drawGrey8<Format>(t); },
                   [&t](const ComPtr<ITalImageColor>&) { drawColor<Format>(t); },
                   [&t](const ComPtr<ITalImage16Grey>&) { drawGrey16<Format>(t); },
                   [&t](const ComPtr<ITalImage16Range>&) { drawRange16<Format>(t); },
               },
               kind);
}

void draw(const ImageOfKind& kind, const Transfer& t) {
    switch (t.bits.format) {
    case PixelFormat::Pal8:
        return drawGrey8<PixelFormat::Pal8>(t);
    case PixelFormat::Rgb15:
        return drawKind<PixelFormat::Rgb15>(kind, t);
    case PixelFormat::Rgb16:
        return drawKind<PixelFormat::Rgb16>(kind, t);
    case PixelFormat::Rgb24:
        return drawKind<PixelFormat::Rgb24>(kind, t);
    case PixelFormat::Rgb32:
        return drawKind<PixelFormat::Rgb32>(kind, t);
    case PixelFormat::Unspecified:
        return;
    }
}

} // namespace

bool isShown(const ImageOfKind& kind, PixelFormat format) {
    switch (format) {
    case PixelFormat::Pal8:
        return std::holds_alternative<ComPtr<ITalImage8Grey>>(kind);
    case PixelFormat::Rgb15:
    case PixelFormat::Rgb16:
    case PixelFormat::Rgb24:
    case PixelFormat::Rgb32:
        return true;
    case PixelFormat::Unspecified:
        break;
    }
    return false;
}

void transfer(CompositionBuffer& buffer, ColorState& colors, const SourceImage& source, long x, long y,
              const Rect& clip) {
    if (clip.empty()) {
        return;
    }
    // The image's own code runs before the buffer's pixels are held, so that nothing it does to the engine
    // can pull them away; the buffer that is there afterwards is drawn into, if there is one.
    const ImagePlanes planes(source);
    const Rect inImage = intersect(clip, placeScaled(x, y, planes.extent(), 1.0));
    if (inImage.empty() || !buffer.exists()) {
        return;
    }
    buffer.withBits([&](const BufferBits& bits) {
        const Rect target = intersect(inImage, {0, 0, bits.extent.width, bits.extent.height});
        if (!target.empty() && isShown(source.image, bits.format)) {
            draw(source.image, {bits, target, x, y, planes, colors});
        }
    });
}

} // namespace talx
