#include "tests/support/test_image.h"

#include <gtest/gtest.h>

namespace talx::test {

// A plane of a colour image, or an access to a plane: what an image hands out beside itself.
class TestPart final : public ITalPelAccessSource, public ITalPelAccess {
public:
    TestPart(TestImage& image, int plane, bool access) : image_(image), plane_(plane), access_(access) {}

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        const IID& face = access_ ? __uuidof(ITalPelAccess) : __uuidof(ITalPelAccessSource);
        const bool known = !image_.failsAt(ImageStep::source, plane_) && (iid == face || iid == IID_IUnknown);
        *object = !known    ? nullptr
                  : access_ ? static_cast<void*>(static_cast<ITalPelAccess*>(this))
                            : static_cast<ITalPelAccessSource*>(this);
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
        return image_.makeAccess(plane_, access);
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
    *object = nullptr;
    if (iid == IID_IUnknown || iid == __uuidof(ITalImage)) {
        *object = image();
    } else if (iid == __uuidof(ITalImage8Grey) && is(ImageKind::grey8)) {
        *object = static_cast<ITalImage8Grey*>(this);
    } else if (iid == __uuidof(ITalImageColor) && is(ImageKind::color)) {
        *object = static_cast<ITalImageColor*>(this);
    } else if (iid == __uuidof(ITalImage16Grey) && is(ImageKind::grey16)) {
        *object = static_cast<ITalImage16Grey*>(this);
    } else if (iid == __uuidof(ITalImage16Range) && is(ImageKind::range16)) {
        *object = static_cast<ITalImage16Range*>(this);
    } else if (failsAt(ImageStep::source)) {
        return fault.result;
    } else if (iid == __uuidof(ITalPelAccessSource) && is(ImageKind::grey8)) {
        *object = static_cast<ITalPelAccessSource*>(this);
    } else if (iid == __uuidof(ITalPelAccessSource16) && is(ImageKind::grey16)) {
        *object = static_cast<ITalPelAccessSource16*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP TestImage::GetPlane(long plane, IUnknown** object) {
    *object = nullptr;
    const bool fails = failsAt(ImageStep::plane, plane);
    if (!fails || fault.yield) {
        *object = static_cast<ITalPelAccessSource*>(new TestPart(*this, plane, false));
        (*object)->AddRef();
    }
    return fails ? fault.result : S_OK;
}

STDMETHODIMP TestImage::CreatePelAccess(TalPelAccessMode mode, long l, long t, long w, long h,
                                        ITalPelAccess** access) {
    EXPECT_TRUE(mode == talPelAccessRead && !l && !t && !w && !h);
    return makeAccess(0, access);
}

// A range image whose mask access fails has already handed out the access to its values.
STDMETHODIMP TestImage::CreatePelAccesses(ITalPelAccess** values, ITalPelAccess** mask) {
    *mask = nullptr;
    const HRESULT hr = makeAccess(0, values);
    return FAILED(hr) || planes_.size() < 2 ? hr : makeAccess(1, mask);
}

HRESULT TestImage::makeAccess(int plane, ITalPelAccess** access) {
    *access = nullptr;
    const bool fails = failsAt(ImageStep::access, plane);
    if (!fails || fault.yield) {
        *access = new TestPart(*this, plane, true);
        (*access)->AddRef();
        ++accesses;
    }
    return fails ? fault.result : S_OK;
}

} // namespace talx::test
