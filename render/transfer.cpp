// See transfer.h.

#include "render/transfer.h"

#include "render/pixels/row_converters.h"

namespace talx {

namespace {

// One drawing: where the pixels come from and where they go.
struct Transfer {
    const LayerBits& layer;
    Rect target; // inside the layer and the image
    long x;      // layer position of the image's pixel (0, 0)
    long y;
    const ImagePlanes& planes;
    ColorState& colors;

    [[nodiscard]] PixelRows destination() const { return {layer.at(target.left, target.top), layer.stride}; }
    [[nodiscard]] ConstPixelRows source(int plane, int bytesPerPel) const {
        const PlaneView& view = planes[plane];
        const std::int64_t column = std::int64_t{target.left} - x;
        const std::int64_t row = std::int64_t{target.top} - y;
        return {view.data + row * view.stride + column * bytesPerPel, view.stride};
    }
    [[nodiscard]] Extent extent() const {
        return {static_cast<std::int32_t>(target.width()), static_cast<std::int32_t>(target.height())};
    }
};

// The owner's mask colour as a pixel of a format.
template <LayerFormat Format>
auto maskPixel(OLE_COLOR word) {
    if constexpr (Format == LayerFormat::Rgb15) {
        return maskPixel15(word);
    } else if constexpr (Format == LayerFormat::Rgb16) {
        return maskPixel16(word);
    } else if constexpr (Format == LayerFormat::Rgb24) {
        return maskPixel24(word);
    } else {
        return std::uint32_t{word};
    }
}

template <LayerFormat Format>
void drawGrey8(const Transfer& t) {
    convertGrey8(t.destination(), t.source(0, 1), t.extent(), t.colors.grey8Map.table<Format>());
}

template <LayerFormat Format>
void drawGrey16(const Transfer& t) {
    ColorMap16& map = t.colors.grey16Map;
    map.setSize(tableSizeOfDepthCode(t.planes.depthCode()));
    convertGrey16(t.destination(), t.source(0, 2), t.extent(), map.table<Format>(), map.maxValue());
}

template <LayerFormat Format>
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

template <LayerFormat Format>
void drawKind(ImageKind kind, const Transfer& t) {
    switch (kind) {
    case ImageKind::Grey8:
        return drawGrey8<Format>(t);
    case ImageKind::Color:
        return convertColor(Format, t.destination(), t.source(0, 1), t.source(1, 1), t.source(2, 1),
                            t.extent());
    case ImageKind::Grey16:
        return drawGrey16<Format>(t);
    case ImageKind::Range16:
        return drawRange16<Format>(t);
    case ImageKind::None:
        return;
    }
}

void draw(ImageKind kind, const Transfer& t) {
    switch (t.layer.format) {
    case LayerFormat::Pal8: // the other kinds are never drawn on a palette
        return kind == ImageKind::Grey8 ? drawGrey8<LayerFormat::Pal8>(t) : void();
    case LayerFormat::Rgb15:
        return drawKind<LayerFormat::Rgb15>(kind, t);
    case LayerFormat::Rgb16:
        return drawKind<LayerFormat::Rgb16>(kind, t);
    case LayerFormat::Rgb24:
        return drawKind<LayerFormat::Rgb24>(kind, t);
    case LayerFormat::Rgb32:
        return drawKind<LayerFormat::Rgb32>(kind, t);
    case LayerFormat::Unspecified:
        return;
    }
}

} // namespace

HRESULT transfer(LayerSurface& surface, ColorState& colors, const SourceImage& source, long x, long y,
                 const Rect& clip) {
    const Rect inImage = intersect(clip, placeScaled(x, y, source.width, source.height, 1.0));
    if (inImage.empty() || !surface.hasBuffer()) {
        return S_OK;
    }
    // The image's own code runs before the buffer's pixels are held, so that nothing it does to the engine
    // can pull them away.
    ImagePlanes planes;
    const HRESULT hr = planes.acquire(source);
    if (FAILED(hr)) {
        return hr;
    }
    return surface.withBits([&](const LayerBits& layer) {
        const Rect target = intersect(inImage, {0, 0, layer.width, layer.height});
        if (!target.empty()) {
            draw(source.kind, {layer, target, x, y, planes, colors});
        }
        return S_OK;
    });
}

} // namespace talx
