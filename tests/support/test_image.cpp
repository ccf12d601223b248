#include "tests/support/test_image.h"

#include <gtest/gtest.h>

namespace talx::test {

// A plane of a colour image, or an access to a plane: what an image hands out beside itself.
class TestPart final : public ITalPelAccessSource, public ITalPelAccess {
public:
    TestPart(TestImage& image, int plane, bool access) : image_(image), plane_(plane), access_(access) {
        image.accesses += access;
    }

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        const IID& face = access_ ? __uuidof(ITalPelAccess) : __uuidof(ITalPelAccessSource);
        const bool known = !image_.failsAt(ImageStep::source, plane_) && (iid == face || iid == IID_IUnknown);
        ITalPelAccess* const access = this;
        ITalPelAccessSource* const source = this;
        *object = !known ? nullptr : access_ ? static_cast<void*>(access) : source;
        return known ? AddRef(), S_OK : E_NOINTERFACE;
    }
    STDMETHOD_(ULONG, AddRef)() override { return image_.AddRef(), ++references_; }
    STDMETHOD_(ULONG, Release)() override {
        image_.Release();
        const long left = --references_;
        if (left == 0) {
            EXPECT_EQ(access_ ? 1 : 0, unlocks_) << "unlocks of the access to plane " << plane_;
            delete this;
        }
        return left;
    }

    STDMETHOD(CreatePelAccess)
    (TalPelAccessMode mode, long l, long t, long w, long h, ITalPelAccess** access) override {
        EXPECT_TRUE(mode == talPelAccessRead && !l && !t && !w && !h);
        return image_.make(ImageStep::access, plane_, access);
    }

    STDMETHOD(get_Data)(__int64* data) override {
        EXPECT_EQ(0, unlocks_) << "used after it was unlocked";
        return image_.answer(ImageStep::data, reinterpret_cast<__int64>(image_.planes_[plane_].data), data,
                             plane_);
    }
    STDMETHOD(get_RowStride)(long* stride) override {
        EXPECT_EQ(0, unlocks_) << "used after it was unlocked";
        return image_.answer(ImageStep::stride, image_.planes_[plane_].stride, stride, plane_);
    }
    STDMETHOD(Unlock)() override {
        ++unlocks_;
        return image_.failsAt(ImageStep::unlock, plane_) ? image_.fault.result : S_OK;
    }

private:
    TestImage& image_;
    const int plane_;
    const bool access_;
    long references_ = 0;
    int unlocks_ = 0;
};

TestImage::~TestImage() {
    EXPECT_EQ(0, references) << "references to an image, its planes or accesses that were not released";
}

STDMETHODIMP TestImage::QueryInterface(REFIID iid, void** object) {
    const bool any = iid == IID_IUnknown || iid == __uuidof(ITalImage);
    *object = any ? image() : nullptr;
    const auto offer = [&]<class Interface>(ImageKind kind, Interface* face) {
        if (iid == __uuidof(Interface) && (kind == kind_ || kind == alsoKind)) {
            *object = face;
        }
    };
    offer(ImageKind::grey8, static_cast<ITalImage8Grey*>(this));
    offer(ImageKind::color, static_cast<ITalImageColor*>(this));
    offer(ImageKind::grey16, static_cast<ITalImage16Grey*>(this));
    offer(ImageKind::range16, static_cast<ITalImage16Range*>(this));
    if (!*object && failsAt(ImageStep::source)) {
        return fault.result;
    }
    offer(ImageKind::grey8, static_cast<ITalPelAccessSource*>(this));
    offer(ImageKind::grey16, static_cast<ITalPelAccessSource16*>(this));
    return *object ? AddRef(), S_OK : E_NOINTERFACE;
}

STDMETHODIMP TestImage::GetPlane(long plane, IUnknown** object) {
    ITalPelAccessSource* source = nullptr;
    const HRESULT hr = make(ImageStep::plane, plane, &source);
    *object = source;
    return hr;
}

STDMETHODIMP TestImage::CreatePelAccess(TalPelAccessMode mode, long l, long t, long w, long h,
                                        ITalPelAccess** access) {
    EXPECT_TRUE(mode == talPelAccessRead && !l && !t && !w && !h);
    return make(ImageStep::access, 0, access);
}

// A range image whose mask access fails has already handed out the access to its values.
STDMETHODIMP TestImage::CreatePelAccesses(ITalPelAccess** values, ITalPelAccess** mask) {
    *mask = nullptr;
    const HRESULT hr = make(ImageStep::access, 0, values);
    return FAILED(hr) || planes_.size() < 2 ? hr : make(ImageStep::access, 1, mask);
}

template <class Face>
HRESULT TestImage::make(ImageStep step, int plane, Face** part) {
    const bool fails = failsAt(step, plane);
    *part = fails && !fault.yield ? nullptr : new TestPart(*this, plane, step == ImageStep::access);
    if (*part) {
        (*part)->AddRef();
    }
    return fails ? fault.result : S_OK;
}

} // namespace talx::test
