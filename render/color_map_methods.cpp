// The colour-map and visible-pixel-mask methods. Null pointers give a bare E_POINTER here.

#include "render/ole_color.h"
#include "render/render_engine_base.h"
#include "render/safe_array.h"
#include "render/system_palette.h"

#include <algorithm>
#include <memory>
#include <span>

namespace talx {

namespace {

struct SafeArrayDeleter {
    void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};
using UniqueSafeArray = std::unique_ptr<SAFEARRAY, SafeArrayDeleter>;

// A new array of opaque words 0xFFRRGGBB, one for each entry. The caller destroys it.
void copyEntries(std::span<const ColorEntry> entries, SAFEARRAY** result) {
    *result = nullptr;
    const UniqueSafeArray array(SafeArrayCreateVector(VT_I4, 0, static_cast<ULONG>(entries.size())));
    if (!array) {
        raise(E_OUTOFMEMORY);
    }
    {
        const SafeArrayAccess access(array.get());
        if (FAILED(access.result())) {
            raise(access.result());
        }
        std::transform(entries.begin(), entries.end(), access.data<std::uint32_t>(),
                       [](ColorEntry e) { return 0xFF000000u | toRgb32(e); });
    }
    const HRESULT hr = SafeArrayCopy(array.get(), result);
    if (FAILED(hr)) {
        raise(hr);
    }
}

// Words 0 to the upper bound of dimension 1 count, whatever the lower bound and the elements' type, but never
// more than the array holds.
std::uint64_t wordCount(SAFEARRAY* array) {
    LONG upper = -1;
    SafeArrayGetUBound(array, 1, &upper);
    const std::uint64_t asked = upper < 0 ? 0 : static_cast<std::uint64_t>(upper) + 1;
    return std::min(asked, sizeInBytes(array) / sizeof(std::uint32_t));
}

// Puts the words 0x??RRGGBB of an array in the place of a map's entries.
template <class Map>
void replaceEntries(Map& map, SAFEARRAY* array) {
    map.beginReplace();
    const SafeArrayAccess access(array);
    require(SUCCEEDED(access.result()), E_INVALIDARG);
    const auto* words = access.data<const std::uint32_t>();
    const std::uint64_t count = wordCount(array);
    require(count == 0 || words, E_INVALIDARG); // a descriptor that never got memory
    for (std::uint64_t i = 0; i < count; ++i) {
        map.append(fromRgbWord(words[i]));
    }
    map.endReplace();
}

} // namespace

STDMETHODIMP RenderEngineBase::get_Image8GreyColorMap(unsigned char GreyVal, OLE_COLOR* pColor) {
    if (!pColor) {
        return bare(E_POINTER);
    }
    *pColor = toColorRef(state().colors.grey8Map.entry(GreyVal));
    return S_OK;
}

STDMETHODIMP RenderEngineBase::put_Image8GreyColorMap(unsigned char GreyVal, OLE_COLOR value) {
    // Owners know failures of this setter under the getter's name.
    return method(L"get_Image8GreyColorMap", [&] {
        const COLORREF color = translateColor(value);
        state().colors.grey8Map.setEntry(GreyVal, fromColorRef(color), [this](std::uint32_t c) {
            return nearestPaletteIndex(palette(), c);
        });
    });
}

STDMETHODIMP RenderEngineBase::get_Image8GreyWholeColorMap(SAFEARRAY** pVal) {
    if (!pVal) {
        return bare(E_POINTER);
    }
    return method(L"get_Image8GreyWholeColorMap", [&] {
        const GreyColorMap8& map = state().colors.grey8Map;
        copyEntries(map.isSet() ? std::span(map.entries()) : std::span<const ColorEntry>(), pVal);
    });
}

STDMETHODIMP RenderEngineBase::put_Image8GreyWholeColorMap(SAFEARRAY** value) {
    if (!value) {
        return bare(E_POINTER);
    }
    return method(L"put_Image8GreyWholeColorMap", [&] { replaceEntries(state().colors.grey8Map, *value); });
}

STDMETHODIMP RenderEngineBase::ClearImage8GreyColorMap() {
    return method(L"ClearImage8GreyColorMap", [&] { state().colors.grey8Map.clear(); });
}

STDMETHODIMP RenderEngineBase::get_Image16GreyColorMap(SAFEARRAY** pVal) {
    if (!pVal) {
        return bare(E_POINTER);
    }
    return method(L"get_Image16GreyColorMap", [&] { copyEntries(state().colors.grey16Map.entries(), pVal); });
}

STDMETHODIMP RenderEngineBase::put_Image16GreyColorMap(SAFEARRAY** value) {
    if (!value) {
        return bare(E_POINTER);
    }
    return method(L"put_Image16GreyColorMap", [&] { replaceEntries(state().colors.grey16Map, *value); });
}

STDMETHODIMP RenderEngineBase::ClearImage16GreyColorMap() {
    return method(L"ClearImage16GreyColorMap", [&] { state().colors.grey16Map.clear(); });
}

STDMETHODIMP RenderEngineBase::get_Image16RangeColorMap(SAFEARRAY** pVal) {
    if (!pVal) {
        return bare(E_POINTER);
    }
    return method(L"get_Image16RangeColorMap",
                  [&] { copyEntries(state().colors.range16Map.entries(), pVal); });
}

STDMETHODIMP RenderEngineBase::put_Image16RangeColorMap(SAFEARRAY** value) {
    if (!value) {
        return bare(E_POINTER);
    }
    return method(L"put_Image16RangeColorMap", [&] { replaceEntries(state().colors.range16Map, *value); });
}

STDMETHODIMP RenderEngineBase::ClearImage16RangeColorMap() {
    return method(L"ClearImage16RangeColorMap", [&] { state().colors.range16Map.clear(); });
}

STDMETHODIMP RenderEngineBase::UnsetColorMaps() {
    return method(L"UnsetColorMaps", [&] {
        state().colors.grey16Map.unset();
        state().colors.range16Map.unset();
    });
}

STDMETHODIMP RenderEngineBase::get_VisiblePixelMaskEnable(VARIANT_BOOL* pShowMask) {
    if (!pShowMask) {
        return bare(E_POINTER);
    }
    *pShowMask = state().colors.visiblePixelMaskEnable ? 1 : 0;
    return S_OK;
}

STDMETHODIMP RenderEngineBase::put_VisiblePixelMaskEnable(VARIANT_BOOL value) {
    state().colors.visiblePixelMaskEnable = value != 0;
    return S_OK;
}

STDMETHODIMP RenderEngineBase::get_VisiblePixelMaskColor(OLE_COLOR* pMaskColor) {
    if (!pMaskColor) {
        return bare(E_POINTER);
    }
    *pMaskColor = state().colors.visiblePixelMaskColor;
    return S_OK;
}

STDMETHODIMP RenderEngineBase::put_VisiblePixelMaskColor(OLE_COLOR value) {
    state().colors.visiblePixelMaskColor = value;
    return S_OK;
}

} // namespace talx
