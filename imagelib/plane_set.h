// The planes of one image: their memory, size and accesses.
#pragma once

#include "com/failure.h"
#include "talxstd.h"

#include <array>
#include <cstddef>
#include <memory>
#include <wrl/client.h>

namespace talx {

// Fails with E_POINTER and the text for a null pointer that a method should store a result through.
inline void checkPointer(const void* pointer, const wchar_t* text = L"The pointer to the result is null.") {
    if (!pointer) {
        fail(E_POINTER, text);
    }
}

// What sets the kinds of image apart: how many planes there are, and the bytes of a pel of each.
struct PlaneLayout {
    long minPlanes;
    long maxPlanes;
    std::array<long, 3> pelBytes;
};
inline constexpr PlaneLayout kind8Grey{1, 1, {1}};
inline constexpr PlaneLayout kindColor{3, 3, {1, 1, 1}};
inline constexpr PlaneLayout kind16Grey{1, 1, {2}};
inline constexpr PlaneLayout kind16Range{1, 2, {2, 1}}; // values, mask

// A part of a plane in pels; all zero stands for the whole plane.
struct PlaneRect {
    long left = 0;
    long top = 0;
    long width = 0;
    long height = 0;
};

// All methods may be called from any thread. Arguments and failures are those of ITalImageMemory and of the
// pel access sources; what fails is thrown (com/failure.h), with result pointers null.
class PlaneSet {
public:
    // clsid: the image class, whose name the failures of accesses bear.
    PlaneSet(const PlaneLayout& kind, const CLSID& clsid) : kind_(kind), clsid_(clsid) {}

    [[nodiscard]] const CLSID& imageClass() const { return clsid_; }

    [[nodiscard]] long width() const;
    [[nodiscard]] long height() const;

    void allocate(long width, long height, long planes);
    void wrap(long plane, long width, long height, __int64 data, long rowStride, IUnknown* keepAlive);
    void createAccess(long plane, TalPelAccessMode mode, const PlaneRect& rect, ITalPelAccess** access) const;
    // Read accesses to planes 0 and 1 as they are at one moment; the second is null without a plane 1.
    void createReadAccesses(ITalPelAccess** first, ITalPelAccess** second) const;

private:
    struct Plane {
        std::byte* data = nullptr; // of pixel (0, 0); null: no such plane
        long rowStride = 0;
        std::shared_ptr<void> memory; // whatever data points into
    };
    struct Content {
        long width = 0;
        long height = 0;
        std::array<Plane, 3> planes;
    };

    void checkPlane(long plane) const;
    [[nodiscard]] Content content() const;
    [[nodiscard]] Microsoft::WRL::ComPtr<ITalPelAccess> createAccess(const Content& content, long plane,
                                                                     const PlaneRect& rect) const;

    const PlaneLayout& kind_;
    const CLSID& clsid_;
    mutable SRWLOCK lock_ = SRWLOCK_INIT;
    Content content_;
};

} // namespace talx
