// See images.h.
#include "imagelib/images.h"

namespace talx {

namespace {

class CTalColorPlane : public CComObjectRootEx<CComMultiThreadModel>,
                       public PelAccessSourceImpl<ITalPelAccessSource> {
public:
    CTalColorPlane(const std::shared_ptr<PlaneSet>& planes, long plane)
        : PelAccessSourceImpl<ITalPelAccessSource>(planes, plane) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<CTalColorPlane, ITalPelAccessSource>()};
        return entries;
    }
};

} // namespace

STDMETHODIMP CTalImage16Grey::get_DepthCode(long* pDepthCode) {
    if (!pDepthCode) {
        return E_POINTER;
    }
    *pDepthCode = depthCode_;
    return S_OK;
}

STDMETHODIMP CTalImage16Grey::put_DepthCode(long DepthCode) {
    depthCode_ = DepthCode;
    return S_OK;
}

std::span<const ComInterfaceEntry> CTalImageColor::interfaceMap() {
    static constexpr ComInterfaceEntry entries[] = {
        comInterface<CTalImageColor, ITalImageColor>(),
        comInterface<CTalImageColor, ITalImageColor, ITalImage>(),
        comInterface<CTalImageColor, ITalImageMemory>(),
    };
    return entries;
}

STDMETHODIMP CTalImageColor::GetPlane(long Plane, IUnknown** ppPlane) {
    if (!ppPlane) {
        return E_POINTER;
    }
    *ppPlane = nullptr;
    if (Plane < 0 || Plane >= kindColor.maxPlanes) {
        return E_INVALIDARG;
    }
    return guarded([&] {
        *ppPlane = makeObject<CTalColorPlane>(planes(), Plane).Detach();
        return S_OK;
    });
}

std::span<const ComInterfaceEntry> CTalImage16Range::interfaceMap() {
    static constexpr ComInterfaceEntry entries[] = {
        comInterface<CTalImage16Range, ITalImage16Range>(),
        comInterface<CTalImage16Range, ITalImage16Range, ITalImage>(),
        comInterface<CTalImage16Range, ITalImageMemory>(),
    };
    return entries;
}

STDMETHODIMP CTalImage16Range::CreatePelAccesses(ITalPelAccess** ppValues, ITalPelAccess** ppMask) {
    return guarded([&] { return planes()->createReadAccesses(ppValues, ppMask); });
}

} // namespace talx
