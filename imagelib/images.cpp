// See images.h.
#include "imagelib/images.h"

namespace talx {

namespace {

class CTalColorPlane : public CComObjectRootEx<CComMultiThreadModel>,
                       public PelAccessSourceImpl<ITalPelAccessSource>,
                       public ISupportErrorInfoImpl {
public:
    CTalColorPlane(const std::shared_ptr<PlaneSet>& planes, long plane)
        : PelAccessSourceImpl<ITalPelAccessSource>(planes, plane) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {comInterface<CTalColorPlane, ITalPelAccessSource>(),
                                                        comInterface<CTalColorPlane, ISupportErrorInfo>()};
        return entries;
    }
};

} // namespace

STDMETHODIMP CTalImage16Grey::get_DepthCode(long* pDepthCode) {
    return answer(L"get_DepthCode", pDepthCode, depthCode_);
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
        comInterface<CTalImageColor, ISupportErrorInfo>(),
    };
    return entries;
}

STDMETHODIMP CTalImageColor::GetPlane(long Plane, IUnknown** ppPlane) {
    return method(L"GetPlane", [&] {
        checkPointer(ppPlane);
        *ppPlane = nullptr;
        if (Plane < 0 || Plane >= kindColor.maxPlanes) {
            fail(E_INVALIDARG, L"Plane is not 0, 1 or 2.");
        }
        *ppPlane = static_cast<ITalPelAccessSource*>(makeObject<CTalColorPlane>(planes(), Plane).Detach());
    });
}

std::span<const ComInterfaceEntry> CTalImage16Range::interfaceMap() {
    static constexpr ComInterfaceEntry entries[] = {
        comInterface<CTalImage16Range, ITalImage16Range>(),
        comInterface<CTalImage16Range, ITalImage16Range, ITalImage>(),
        comInterface<CTalImage16Range, ITalImageMemory>(),
        comInterface<CTalImage16Range, ISupportErrorInfo>(),
    };
    return entries;
}

STDMETHODIMP CTalImage16Range::CreatePelAccesses(ITalPelAccess** ppValues, ITalPelAccess** ppMask) {
    return method(L"CreatePelAccesses", [&] { planes()->createReadAccesses(ppValues, ppMask); });
}

} // namespace talx
