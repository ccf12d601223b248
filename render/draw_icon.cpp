// See draw_icon.h.

#include "render/draw_icon.h"

#include "com/failure.h"
#include "render/resampler.h"
#include "render/safe_array.h"
#include "render/system_palette.h"

#include <oleauto.h>
#include <olectl.h>

namespace talx {

using Microsoft::WRL::ComPtr;

namespace {

constexpr ULONG indexCount = 256;

// Turns OLE colours into what a buffer stores for them, a run of equal ones once. The first is compared with
// assumedLast, a word taken as already turned into 0: owners know the results.
template <class Store>
class ColorTranslator {
public:
    ColorTranslator(OLE_COLOR assumedLast, Store store) : last_(assumedLast), store_(store) {}

    std::uint32_t translate(OLE_COLOR color) {
        if (color != last_) {
            COLORREF translated = 0;
            check(OleTranslateColor(color, nullptr, &translated));
            last_ = color;
            stored_ = store_(translated);
        }
        return stored_;
    }

private:
    OLE_COLOR last_;
    Store store_;
    std::uint32_t stored_ = 0;
};

IconTables blendTables(PixelFormat format, const OLE_COLOR* colors, const BYTE* transparencies) {
    IconTables tables;
    ColorTranslator translator(0, [format](COLORREF color) { return toPixel(format, fromColorRef(color)); });
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.weight[i] = iconWeight(transparencies[i]);
        if (tables.weight[i] != invisibleWeight) {
            tables.color[i] = translator.translate(colors[i]);
        }
    }
    return tables;
}

// An opaque entry becomes index 0 whatever its colour, and only exactly 100 per cent is invisible.
IconIndexTables indexTables(HPALETTE palette, const OLE_COLOR* colors, const BYTE* transparencies) {
    IconIndexTables tables;
    ColorTranslator translator(static_cast<OLE_COLOR>(-1), [palette](COLORREF color) {
        return std::uint32_t{nearestPaletteIndex(palette, color)};
    });
    for (ULONG i = 0; i < indexCount; ++i) {
        tables.transparent[i] = transparencies[i] == 100;
        if (transparencies[i] != 0) {
            tables.index[i] = static_cast<std::uint8_t>(translator.translate(colors[i]));
        }
    }
    return tables;
}

// The two maps of an icon. They are accessed before the icon's own code runs and until the drawing is done,
// so that the arrays stay as they are.
class IconMaps {
public:
    IconMaps(SAFEARRAY* colorMap, SAFEARRAY* transparencyMap)
        : colorMap_(colorMap), transparencyMap_(transparencyMap), colorAccess_(colorMap),
          transparencyAccess_(transparencyMap) {}

    // Throws what keeps the maps from being used: no array, or one with less memory than 256 elements take.
    void checkUsable() const {
        check(colorAccess_.result());
        check(transparencyAccess_.result());
        const bool suits = colors() && sizeInBytes(colorMap_) >= indexCount * sizeof(OLE_COLOR) &&
                           transparencies() && sizeInBytes(transparencyMap_) >= indexCount;
        require(suits, E_INVALIDARG);
    }

    [[nodiscard]] const OLE_COLOR* colors() const { return colorAccess_.data<const OLE_COLOR>(); }
    [[nodiscard]] const BYTE* transparencies() const { return transparencyAccess_.data<const BYTE>(); }

private:
    SAFEARRAY* colorMap_;
    SAFEARRAY* transparencyMap_;
    SafeArrayAccess colorAccess_;
    SafeArrayAccess transparencyAccess_;
};

struct IconPixels {
    ConstPixelRows rows; // index of target's top left pixel
    Rect target;         // buffer pixels to draw
    PixelFormat format;  // of the buffer
};

// Calls draw with the buffer's pixels and the part of the icon that lies on them.
template <class Draw>
void drawOnBits(CompositionBuffer& buffer, const IconPixels& icon, const Draw& draw) {
    buffer.withBits([&](const BufferBits& bits) {
        // The target starts at or after (0, 0), so only its far edges can leave the buffer.
        const Rect target = intersect(icon.target, {0, 0, bits.extent.width, bits.extent.height});
        // The tables are for one format; a surface that turns out to have other pixels is left alone.
        if (!target.empty() && bits.format == icon.format) {
            draw(PixelRows{bits.at(target.left, target.top), bits.stride}, target.extent());
        }
    });
}

void drawOnPalette(CompositionBuffer& buffer, const IconPixels& icon, const IconMaps& maps) {
    const IconIndexTables tables = indexTables(buffer.palette(), maps.colors(), maps.transparencies());
    drawOnBits(buffer, icon, [&](const PixelRows& pixels, Extent extent) {
        drawIconIndices(pixels, icon.rows, extent, tables);
    });
}

void drawBlended(CompositionBuffer& buffer, const IconPixels& icon, const IconMaps& maps) {
    const IconTables tables = blendTables(icon.format, maps.colors(), maps.transparencies());
    if (icon.format == PixelFormat::Rgb32 && buffer.blendIconInHardware({icon.target, icon.rows, tables})) {
        return;
    }
    drawOnBits(buffer, icon, [&](const PixelRows& pixels, Extent extent) {
        blendIcon(icon.format, pixels, icon.rows, extent, tables);
    });
}

// The icon core: an icon one to one with its pixel (0, 0) at (left, top).
void drawIconPixels(CompositionBuffer& buffer, const SourceImage& icon, const IconMaps& maps, long left,
                    long top, const Rect& clip) {
    const ImagePlanes planes(icon);
    const Rect target = intersect(placeScaled(left, top, planes.extent(), 1.0), clip);
    if (target.empty() ||
        !buffer.exists()) { // the icon's own code may have changed its size, or the engine's
        return;
    }
    const PlaneView& plane = planes[0];
    const std::int64_t column = std::int64_t{target.left} - left;
    const std::int64_t row = std::int64_t{target.top} - top;
    const IconPixels pixels{
        {plane.data + row * plane.stride + column, plane.stride}, target, buffer.format()};
    switch (pixels.format) {
    case PixelFormat::Unspecified:
        return;
    case PixelFormat::Pal8:
        return drawOnPalette(buffer, pixels, maps);
    case PixelFormat::Rgb15:
    case PixelFormat::Rgb16:
    case PixelFormat::Rgb24:
    case PixelFormat::Rgb32:
        return drawBlended(buffer, pixels, maps);
    }
}

// The rectangle that an icon is meant to cover: fractions of the position shift the far edges only. A
// position that is not a number counts as 0.
Rect placeIcon(const IconPlacement& p, Extent icon) {
    const double x = std::isnan(p.x) ? 0 : p.x;
    const double y = std::isnan(p.y) ? 0 : p.y;
    const auto farEdge = [&p](double origin, std::int32_t size) {
        return cut(origin + roundHalfUp(static_cast<double>(size) * p.scale));
    };
    return {cut(x), cut(y), farEdge(x, icon.width), farEdge(y, icon.height)};
}

} // namespace

void drawIcon(CompositionBuffer& buffer, EngineState& state, ITalImage8Grey* icon, SAFEARRAY* colorMap,
              SAFEARRAY* transparencyMap, const IconPlacement& placement) {
    if (!icon) {
        return;
    }
    const IconMaps maps(colorMap, transparencyMap);
    const SourceImage source{ComPtr<ITalImage8Grey>(icon), extentOf(icon), true};
    const Rect placed = placeIcon(placement, source.extent);
    const Rect clip = intersect(intersect(placed, placement.clip), {0, 0, state.width, state.height});
    if (clip.empty() || source.extent.empty() || !buffer.exists()) {
        return;
    }
    maps.checkUsable();
    if (isUnitScale(placement.scale)) {
        return drawIconPixels(buffer, source, maps, placed.left, placed.top, clip);
    }
    if (buffer.format() == PixelFormat::Unspecified) {
        // It fails as it would be seen to fail elsewhere, but nothing is scaled.
        const ImagePlanes planes(source);
        return;
    }
    const Scaling scaling{placed.left, placed.top, placement.scale, SamplingMethod::Nearest, false};
    if (const auto scaled = resample(source, scaling, clip, state.scratch)) {
        drawIconPixels(buffer, *scaled, maps, clip.left, clip.top, clip);
    }
}

} // namespace talx
