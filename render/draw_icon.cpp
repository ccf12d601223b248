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

// Translates OLE colours, a run of equal ones once. Starts as if it had just translated a given word to
// black.
class ColorTranslator {
public:
    explicit ColorTranslator(OLE_COLOR first) : last_(first) {}

    HRESULT translate(OLE_COLOR color, COLORREF& translated) {
        if (color != last_) {
            const HRESULT hr = OleTranslateColor(color, nullptr, &translated_);
            if (FAILED(hr)) {
                return hr;
            }
            last_ = color;
        }
        translated = translated_;
        return S_OK;
    }

private:
    OLE_COLOR last_;
    COLORREF translated_ = 0;
};

std::uint32_t iconPixel(LayerFormat format, COLORREF color) {
    const ColorEntry entry = fromColorRef(color);
    switch (format) {
    case LayerFormat::Rgb15:
        return toRgb15(entry);
    case LayerFormat::Rgb16:
        return toRgb16(entry);
    default:
        return toRgb32(entry);
    }
}

HRESULT buildTables(LayerFormat format, const OLE_COLOR* colors, const BYTE* transparencies,
                    IconTables& tables) {
    ColorTranslator translator(0);
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.weight[i] = iconWeight(transparencies[i]);
        if (tables.weight[i] == invisibleWeight) {
            continue;
        }
        COLORREF color = 0;
        const HRESULT hr = translator.translate(colors[i], color);
        if (FAILED(hr)) {
            return hr;
        }
        tables.color[i] = iconPixel(format, color);
    }
    return S_OK;
}

// An opaque entry becomes index 0 whatever its colour, and only exactly 100 per cent is invisible.
HRESULT buildIndexTables(HPALETTE palette, const OLE_COLOR* colors, const BYTE* transparencies,
                         IconIndexTables& tables) {
    ColorTranslator translator(static_cast<OLE_COLOR>(-1));
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.transparent[i] = transparencies[i] == 100;
        if (transparencies[i] == 0) {
            continue;
        }
        COLORREF color = 0;
        const HRESULT hr = translator.translate(colors[i], color);
        if (FAILED(hr)) {
            return hr;
        }
        tables.index[i] = nearestPaletteIndex(palette, color);
    }
    return S_OK;
}

// The two maps of an icon, accessed for the length of a drawing.
struct IconMaps {
    IconMaps(SAFEARRAY* colorMap, SAFEARRAY* transparencyMap)
        : colorAccess(colorMap), transparencyAccess(transparencyMap) {}

    [[nodiscard]] HRESULT result() const {
        return FAILED(colorAccess.result()) ? colorAccess.result() : transparencyAccess.result();
    }
    [[nodiscard]] const OLE_COLOR* colors() const { return colorAccess.data<const OLE_COLOR>(); }
    [[nodiscard]] const BYTE* transparencies() const { return transparencyAccess.data<const BYTE>(); }

    SafeArrayAccess colorAccess;
    SafeArrayAccess transparencyAccess;
};

struct IconPixels {
    ConstPixelRows rows; // index of target's top left pixel
    Rect target;         // layer pixels to draw
};

// Calls draw with the layer's bits and the part of the icon that lies on them.
template <class Draw>
HRESULT drawOnBits(LayerSurface& surface, const IconPixels& icon, Draw&& draw) {
    return surface.withBits([&](const LayerBits& layer) {
        // The target starts at or after (0, 0), so only its far edges can leave the layer.
        const Rect target = intersect(icon.target, {0, 0, layer.width, layer.height});
        if (!target.empty() && layer.format == surface.format()) {
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
    const LayerFormat format = surface.format();
    IconTables tables;
    const HRESULT hr = buildTables(format, maps.colors(), maps.transparencies(), tables);
    if (FAILED(hr)) {
        return hr;
    }
    if (format == LayerFormat::Rgb32 &&
        SUCCEEDED(surface.blendIconInHardware({icon.target, icon.rows, tables}))) {
        return S_OK;
    }
    return drawOnBits(surface, icon, [&](const PixelRows& layer, Extent extent) {
        blendIcon(format, layer, icon.rows, extent, tables);
    });
}

// The icon core: an icon one to one with its pixel (0, 0) at (left, top).
HRESULT drawIconPixels(LayerSurface& surface, const SourceImage& icon, SAFEARRAY* colorMap,
                       SAFEARRAY* transparencyMap, long left, long top, const Rect& clip) {
    const Rect target = intersect(placeScaled(left, top, icon.width, icon.height, 1.0), clip);
    if (target.empty() || !surface.hasBuffer()) {
        return S_OK;
    }
    ImagePlanes planes;
    const HRESULT hr = planes.acquire(icon.image.Get(), ImageKind::Grey8, icon.width, icon.height);
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
    const IconPixels pixels{{plane.data + row * plane.stride + column, plane.stride}, target};
    switch (surface.format()) {
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
    HRESULT hr = checkMap(colorMap, sizeof(OLE_COLOR));
    if (SUCCEEDED(hr)) {
        hr = checkMap(transparencyMap, sizeof(BYTE));
    }
    SourceImage source;
    source.image = icon;
    source.kind = ImageKind::Grey8;
    if (SUCCEEDED(hr)) {
        hr = readSize(source);
    }
    if (FAILED(hr)) {
        return hr;
    }
    const Rect placed = placeIcon(placement, source);
    const Rect clip = intersect(intersect(placed, placement.clip), {0, 0, state.width, state.height});
    if (clip.empty() || source.width <= 0 || source.height <= 0) {
        return S_OK;
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
