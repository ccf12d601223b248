// An implementation of the image interfaces that has nothing to do with talxstd.dll: over any memory, of any
// shape, failing wherever a test wants, and strict about how it is used.
#pragma once

#include "talxstd.h"

#include <functional>
#include <vector>

namespace talx::test {

enum class ImageKind { none, grey8, color, grey16, range16 };

struct ImagePlane {
    const void* data; // of pixel (0, 0)
    long stride;      // bytes from row to row, of either sign
};

// The step at which an image fails. source: the question for the pel access source interface.
enum class ImageStep { never, width, height, depthCode, plane, source, access, data, stride, unlock };

struct ImageFault {
    ImageStep step = ImageStep::never;
    HRESULT result = E_FAIL;       // S_OK: the step succeeds but yields null
    int plane = 0;                 // the plane that fails: 0 to 2 for colour, 1 is the mask of a range image
    bool yield = false;            // the step fails but yields its object all the same
    std::function<void()> instead; // where set, the step does this and succeeds
};

// Lives on the test's stack. Its destructor fails the test when a reference is left, or when an access was
// not unlocked exactly once; so does, at once, an access that is used or unlocked too late.
class TestImage final : public ITalImage8Grey,
                        public ITalImageColor,
                        public ITalImage16Grey,
                        public ITalImage16Range,
                        public ITalPelAccessSource,
                        public ITalPelAccessSource16 {
public:
    // planes: one for the grey kinds, three for colour, values and optionally mask for range.
    TestImage(ImageKind kind, long width, long height, std::vector<ImagePlane> planes, long depthCode = 0)
        : width(width), height(height), depthCode(depthCode), kind_(kind), planes_(std::move(planes)) {}
    ~TestImage();
    TestImage(const TestImage&) = delete;
    TestImage& operator=(const TestImage&) = delete;

    ITalImage* image() { return static_cast<ITalImage8Grey*>(this); }
    ITalImage8Grey* icon() { return this; }

    ImageFault fault;
    long width, height, depthCode;        // what it answers the next time
    ImageKind alsoKind = ImageKind::none; // that it answers too
    long references = 0;                  // to the image, its plane objects and accesses together
    int accesses = 0;                     // made so far

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override;
    STDMETHOD_(ULONG, AddRef)() override { return ++references; }
    STDMETHOD_(ULONG, Release)() override { return --references; }
    STDMETHOD(get_Width)(long* out) override { return answer(ImageStep::width, width, out); }
    STDMETHOD(get_Height)(long* out) override { return answer(ImageStep::height, height, out); }
    STDMETHOD(get_DepthCode)(long* out) override { return answer(ImageStep::depthCode, depthCode, out); }
    STDMETHOD(put_DepthCode)(long) override { return E_NOTIMPL; }
    STDMETHOD(GetPlane)(long plane, IUnknown** object) override;
    STDMETHOD(CreatePelAccess)
    (TalPelAccessMode mode, long l, long t, long w, long h, ITalPelAccess** access) override;
    STDMETHOD(CreatePelAccesses)(ITalPelAccess** values, ITalPelAccess** mask) override;

private:
    friend class TestPart;
    [[nodiscard]] bool failsAt(ImageStep step, int plane = 0) const {
        const bool here = fault.step == step && fault.plane == plane;
        return here && fault.instead ? (fault.instead(), false) : here;
    }
    // Answers a question for a number or an object's address, or fails at it.
    template <class Value>
    HRESULT answer(ImageStep step, Value value, Value* out, int plane = 0) const {
        const bool fails = failsAt(step, plane);
        *out = fails && !fault.yield ? Value{} : value;
        return fails ? fault.result : S_OK;
    }
    template <class Face>
    HRESULT make(ImageStep step, int plane, Face** part);

    const ImageKind kind_;
    const std::vector<ImagePlane> planes_;
};

} // namespace talx::test
