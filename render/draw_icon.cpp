// See draw_icon.h.

#include "render/draw_icon.h"

#include "render/resampler.h"
#include "render/safe_array.h"
#include "render/system_palette.h"

#include <oleauto.h>
#include <olectl.h>

namespace talx {

namespace {

constexpr ULONG indexCount = 256;

HRESULT checkMap(SAFEARRAY* array, UINT elementSize) {
    if (!array) {
        return E_POINTER;
    }
    return isVectorOf(array, elementSize) && array->rgsabound[0].cElements >= indexCount ? S_OK
                                                                                         : E_INVALIDARG;
}

// Turns OLE colours into what a layer stores for them, a run of equal ones once. The first is compared with
// assumedLast, a word taken as already turned into 0: owners know the results.
template <class Store>
class ColorTranslator {
public:
    ColorTranslator(OLE_COLOR assumedLast, Store store) : last_(assumedLast), store_(store) {}

    HRESULT translate(OLE_COLOR color, std::uint32_t& stored) {
        if (color != last_) {
            COLORREF translated = 0;
            const HRESULT hr = OleTranslateColor(color, nullptr, &translated);
            if (FAILED(hr)) {
                return hr;
            }
            last_ = color;
            stored_ = store_(translated);
        }
        stored = stored_;
        return S_OK;
    }

private:
    OLE_COLOR last_;
    Store store_;
    std::uint32_t stored_ = 0;
};

HRESULT buildTables(LayerFormat format, const OLE_COLOR* colors, const BYTE* transparencies,
                    IconTables& tables) {
    ColorTranslator translator(0, [format](COLORREF color) { return toPixel(format, fromColorRef(color)); });
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.weight[i] = iconWeight(transparencies[i]);
        if (tables.weight[i] == invisibleWeight) {
            continue;
        }
        const HRESULT hr = translator.translate(colors[i], tables.color[i]);
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

// An opaque entry becomes index 0 whatever its colour, and only exactly 100 per cent is invisible.
HRESULT buildIndexTables(HPALETTE palette, const OLE_COLOR* colors, const BYTE* transparencies,
                         IconIndexTables& tables) {
    ColorTranslator translator(static_cast<OLE_COLOR>(-1), [palette](COLORREF color) {
        return std::uint32_t{nearestPaletteIndex(palette, color)};
    });
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.transparent[i] = transparencies[i] == 100;
        if (transparencies[i] == 0) {
            continue;
        }
        std::uint32_t index = 0;
        const HRESULT hr = translator.translate(colors[i], index);
        if (FAILED(hr)) {
            return hr;
        }
        tables.index[i] = static_cast<std::uint8_t>(index);
    }
    return S_OK;
}

// The two maps of an icon, accessed for the length of a drawing.
struct IconMaps {
    IconMaps(SAFEARRAY* colorMap, SAFEARRAY* transparencyMap)
        : colorAccess(colorMap), transparencyAccess(transparencyMap) {}

    // E_INVALIDARG for an array that never got memory.
    [[nodiscard]] HRESULT result() const {
        if (FAILED(colorAccess.result())) {
            return colorAccess.result();
        }
        if (FAILED(transparencyAccess.result())) {
            return transparencyAccess.result();
        }
        return colors() && transparencies() ? S_OK : E_INVALIDARG;
    }
    [[nodiscard]] const OLE_COLOR* colors() const { return colorAccess.data<const OLE_COLOR>(); }
    [[nodiscard]] const BYTE* transparencies() const { return transparencyAccess.data<const BYTE>(); }

    SafeArrayAccess colorAccess;
    SafeArrayAccess transparencyAccess;
};

struct IconPixels {
    ConstPixelRows rows; // index of target's top left pixel
    Rect target;         // layer pixels to draw
    LayerFormat format;  // of the layer
};

// Calls draw with the layer's bits and the part of the icon that lies on them.
template <class Draw>
HRESULT drawOnBits(LayerSurface& surface, const IconPixels& icon, Draw&& draw) {
    return surface.withBits([&](const LayerBits& layer) {
        // The target starts at or after (0, 0), so only its far edges can leave the layer.
        const Rect target = intersect(icon.target, {0, 0, layer.width, layer.height});
        // The tables are for one format; a surface that turns out to have other pixels is left alone.
        if (!target.empty() && layer.format == icon.format) {
            draw(PixelRows{layer.at(target.left, target.top), layer.stride},
                 Extent{static_cast<std::int32_t>(target.width()),
                        static_cast<std::int32_t>(target.height())});
        }
        return S_OK;
    });
}

HRESULT drawOnPalette(LayerSurface& surface, const IconPixels& icon, const IconMaps& maps) {
    IconIndexTables tables;
    const HRESULT hr = buildIndexTables(surface.palette(), maps.colors(), maps.transparencies(), tables);
    if (FAILED(hr)) {
        return hr;
    }
    return drawOnBits(surface, icon, [&](const PixelRows& layer, Extent extent) {
        drawIconIndices(layer, icon.rows, extent, tables);
    });
}

HRESULT drawBlended(LayerSurface& surface, const IconPixels& icon, const IconMaps& maps) {
    IconTables tables;
    const HRESULT hr = buildTables(icon.format, maps.colors(), maps.transparencies(), tables);
    if (FAILED(hr)) {
        return hr;
    }
    if (icon.format == LayerFormat::Rgb32 &&
        SUCCEEDED(surface.blendIconInHardware({icon.target, icon.rows, tables}))) {
        return S_OK;
    }
    return drawOnBits(surface, icon, [&](const PixelRows& layer, Extent extent) {
        blendIcon(icon.format, layer, icon.rows, extent, tables);
    });
}

// The icon core: an icon one to one with its pixel (0, 0) at (left, top).
HRESULT drawIconPixels(LayerSurface& surface, const SourceImage& icon, SAFEARRAY* colorMap,
                       SAFEARRAY* transparencyMap, long left, long top, const Rect& clip) {
    const Rect target = intersect(placeScaled(left, top, icon.width, icon.height, 1.0), clip);
    if (target.empty()) {
        return S_OK;
    }
    ImagePlanes planes;
    const HRESULT hr = planes.acquire(icon);
    if (FAILED(hr)) {
        return hr;
    }
    const IconMaps maps(colorMap, transparencyMap);
    if (FAILED(maps.result())) {
        return maps.result();
    }
    const PlaneView& plane = planes[0];
    const std::int64_t column = std::int64_t{target.left} - left;
    const std::int64_t row = std::int64_t{target.top} - top;
    const IconPixels pixels{
        {plane.data + row * plane.stride + column, plane.stride}, target, surface.format()};
    switch (pixels.format) {
    case LayerFormat::Unspecified:
        return S_OK;
    case LayerFormat::Pal8:
        return drawOnPalette(surface, pixels, maps);
    default:
        return drawBlended(surface, pixels, maps);
    }
}

// The rectangle that an icon is meant to cover: fractions of the position shift the far edges only. A
// position that is not a number counts as 0.
Rect placeIcon(const IconPlacement& p, const SourceImage& icon) {
    const double x = std::isnan(p.x) ? 0 : p.x;
    const double y = std::isnan(p.y) ? 0 : p.y;
    const auto farEdge = [&p](double origin, std::int32_t size) {
        return cut(origin + roundHalfUp(static_cast<double>(size) * p.scale));
    };
    return {cut(x), cut(y), farEdge(x, icon.width), farEdge(y, icon.height)};
}

} // namespace

HRESULT drawIcon(LayerSurface& surface, EngineState& state, ITalImage8Grey* icon, SAFEARRAY* colorMap,
                 SAFEARRAY* transparencyMap, const IconPlacement& placement) {
    if (!icon) {
        return S_OK;
    }
    SourceImage source;
    source.image = icon;
    source.kind = ImageKind::Grey8;
    HRESULT hr = readSize(source);
    if (FAILED(hr)) {
        return hr;
    }
    const Rect placed = placeIcon(placement, source);
    const Rect clip = intersect(intersect(placed, placement.clip), {0, 0, state.width, state.height});
    if (clip.empty() || source.width <= 0 || source.height <= 0 || !surface.hasBuffer()) {
        return S_OK;
    }
    hr = checkMap(colorMap, sizeof(OLE_COLOR));
    if (SUCCEEDED(hr)) {
        hr = checkMap(transparencyMap, sizeof(BYTE));
    }
    if (FAILED(hr)) {
        return hr;
    }
    if (isUnitScale(placement.scale)) {
        return drawIconPixels(surface, source, colorMap, transparencyMap, placed.left, placed.top, clip);
    }
    SourceImage scaled;
    hr = resample(source, placement.scale, placed.left, placed.top, clip, SamplingMethod::Nearest, scaled);
    if (FAILED(hr) || !scaled.image) {
        return hr;
    }
    return drawIconPixels(surface, scaled, colorMap, transparencyMap, clip.left, clip.top, clip);
}

} // namespace talx
