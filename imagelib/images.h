// The image classes of the library. They are registered as "Both", so that any thread, a camera's for one,
// makes its images in its own apartment: there are no proxies for the interfaces. Several threads may use an
// image at once; who writes pixels, or replaces the memory, while others draw them is for the owner to
// settle.
#pragma once

#include "com/class_info.h"
#include "com/com_object.h"
#include "imagelib/plane_set.h"

#include <atomic>

namespace talx {

// What all image classes have: ITalImage, as the base of their kind interface, and ITalImageMemory.
template <class Coclass, class KindInterface, const PlaneLayout& kind>
class ImageImpl : public CComObjectRootEx<CComMultiThreadModel>,
                  public KindInterface,
                  public ITalImageMemory,
                  public ISupportErrorInfoImpl {
public:
    STDMETHOD(get_Width)(long* pWidth) override { return answer(L"get_Width", pWidth, planes_->width()); }
    STDMETHOD(get_Height)(long* pHeight) override {
        return answer(L"get_Height", pHeight, planes_->height());
    }

    STDMETHOD(Allocate)(long Width, long Height, long Planes) override {
        return memoryMethod(L"Allocate", [&] { planes_->allocate(Width, Height, Planes); });
    }
    STDMETHOD(Wrap)
    (long Plane, long Width, long Height, __int64 Data, long RowStride, IUnknown* KeepAlive) override {
        return memoryMethod(L"Wrap",
                            [&] { planes_->wrap(Plane, Width, Height, Data, RowStride, KeepAlive); });
    }
    STDMETHOD(CreatePlaneAccess)(long Plane, TalPelAccessMode Mode, ITalPelAccess** ppAccess) override {
        return memoryMethod(L"CreatePlaneAccess", [&] { planes_->createAccess(Plane, Mode, {}, ppAccess); });
    }

protected:
    [[nodiscard]] const std::shared_ptr<PlaneSet>& planes() const { return planes_; }

    // Answers a property. What cannot fail needs no frame.
    HRESULT answer(const wchar_t* name, long* result, long value) const {
        return result ? (*result = value, S_OK) : method(name, [] { checkPointer(nullptr); });
    }

    // Runs the body of a method of the kind interface in its frame.
    template <class Body>
    HRESULT method(const wchar_t* name, Body&& body) const {
        return MethodFrame({__uuidof(KindInterface), __uuidof(Coclass)}, name).run(std::forward<Body>(body));
    }

private:
    template <class Body>
    HRESULT memoryMethod(const wchar_t* name, Body&& body) const {
        return MethodFrame({__uuidof(ITalImageMemory), __uuidof(Coclass)}, name)
            .run(std::forward<Body>(body));
    }

    const std::shared_ptr<PlaneSet> planes_ = std::make_shared<PlaneSet>(kind, __uuidof(Coclass));
};

// Either source interface for one plane: whatever memory the plane has when an access is created.
template <class Source>
class PelAccessSourceImpl : public Source {
public:
    STDMETHOD(CreatePelAccess)
    (TalPelAccessMode Mode, long Left, long Top, long Width, long Height, ITalPelAccess** ppAccess) override {
        return MethodFrame({__uuidof(Source), planes_->imageClass()}, L"CreatePelAccess").run([&] {
            planes_->createAccess(plane_, Mode, {Left, Top, Width, Height}, ppAccess);
        });
    }

protected:
    PelAccessSourceImpl(std::shared_ptr<PlaneSet> planes, long plane)
        : planes_(std::move(planes)), plane_(plane) {}

private:
    const std::shared_ptr<PlaneSet> planes_;
    const long plane_;
};

// An image of one plane, which answers the source interface itself.
template <class Class, class Coclass, class KindInterface, const PlaneLayout& kind, class Source>
class SinglePlaneImage : public ImageImpl<Coclass, KindInterface, kind>,
                         public CComCoClass<Class, Coclass>,
                         public PelAccessSourceImpl<Source> {
public:
    SinglePlaneImage() : PelAccessSourceImpl<Source>(this->planes(), 0) {}

    static std::span<const ComInterfaceEntry> interfaceMap() {
        static constexpr ComInterfaceEntry entries[] = {
            comInterface<Class, KindInterface>(),
            comInterface<Class, KindInterface, ITalImage>(),
            comInterface<Class, Source>(),
            comInterface<Class, ITalImageMemory>(),
            comInterface<Class, ISupportErrorInfo>(),
        };
        return entries;
    }
};

class CTalImage8Grey
    : public SinglePlaneImage<CTalImage8Grey, TalImage8Grey, ITalImage8Grey, kind8Grey, ITalPelAccessSource> {
};

class CTalImage16Grey : public SinglePlaneImage<CTalImage16Grey, TalImage16Grey, ITalImage16Grey, kind16Grey,
                                                ITalPelAccessSource16> {
public:
    STDMETHOD(get_DepthCode)(long* pDepthCode) override;
    STDMETHOD(put_DepthCode)(long DepthCode) override;

private:
    std::atomic<long> depthCode_ = talDepth16;
};

class CTalImageColor : public ImageImpl<TalImageColor, ITalImageColor, kindColor>,
                       public CComCoClass<CTalImageColor, TalImageColor> {
public:
    static std::span<const ComInterfaceEntry> interfaceMap();

    STDMETHOD(GetPlane)(long Plane, IUnknown** ppPlane) override;
};

class CTalImage16Range : public ImageImpl<TalImage16Range, ITalImage16Range, kind16Range>,
                         public CComCoClass<CTalImage16Range, TalImage16Range> {
public:
    static std::span<const ComInterfaceEntry> interfaceMap();

    STDMETHOD(CreatePelAccesses)(ITalPelAccess** ppValues, ITalPelAccess** ppMask) override;
};

} // namespace talx
