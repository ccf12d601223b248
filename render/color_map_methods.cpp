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
        throw _com_error(E_OUTOFMEMORY);
    }
    {
        const SafeArrayAccess access(array.get());
        if (FAILED(access.result())) {
            throw _com_error(access.result());
        }
        std::transform(entries.begin(), entries.end(), access.data<std::uint32_t>(),
                       [](ColorEntry e) { return 0xFF000000u | toRgb32(e); });
    }
    const HRESULT hr = SafeArrayCopy(array.get(), result);
    if (FAILED(hr)) {
        throw _com_error(hr);
    }
}

// Elements 0 to the upper bound count, whatever the lower bound, but never more than the array holds.
ULONG elementCount(SAFEARRAY* array) {
    LONG upper = -1;
    SafeArrayGetUBound(array, 1, &upper);
    return upper < 0 ? 0 : std::min(static_cast<ULONG>(upper) + 1, array->rgsabound[0].cElements);
}

// Puts the elements of an array of words 0x??RRGGBB in the place of a map's entries.
template <class Map>
void replaceEntries(Map& map, SAFEARRAY* array) {
    map.beginReplace();
    check(isVectorOf(array, sizeof(std::uint32_t)) ? S_OK : E_INVALIDARG);
    const SafeArrayAccess access(array);
    check(SUCCEEDED(access.result()) ? S_OK : E_INVALIDARG);
    const auto* element = access.data<const std::uint32_t>();
    const ULONG count = elementCount(array);
    check(count == 0 || element ? S_OK : E_INVALIDARG); // a descriptor that never got memory
    for (ULONG i = 0; i < count; ++i) {
        map.append(fromRgbWord(element[i]));
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
