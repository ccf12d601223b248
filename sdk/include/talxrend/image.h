// Images: with memory of their own, or around memory that the owner already has, such as a camera's buffer.
//
// Sizes are in pixels and at least 1 x 1, strides in bytes from one row to the next; a negative stride is
// that of rows stored bottom-up, with the address of pixel (0, 0) still that of the top left one.
#pragma once

#include "talxrend/com.h"

#include <talxstd.h>

#include <concepts>
#include <cstddef>
#include <cstdint>

namespace talxrend {

// One plane of an image in the owner's memory. Pel is std::uint8_t or std::uint16_t.
template <class Pel>
struct Plane {
    const Pel* data = nullptr; // of pixel (0, 0)
    long stride = 0;
};

// What holds the memory of wrapped images alive: released by the image library as soon as neither the image
// nor an access to its pixels needs the memory, on the thread that let go of it last. Null where the owner
// sees to that.
using KeepAlive = ComPtr<IUnknown>;

// Calls the function then, once. It must not throw.
[[nodiscard]] KeepAlive keepAlive(std::invocable auto done) {
    struct Call final : Object<IUnknown> {
        explicit Call(decltype(done) work) : function(std::move(work)) {}
        ~Call() override { function(); }
        decltype(done) function;
    };
    return new Call(std::move(done));
}

// Holds the pointer for that long.
[[nodiscard]] inline KeepAlive keepAlive(std::shared_ptr<const void> memory) {
    return keepAlive([held = std::move(memory)] {});
}

// A new image of Kind, one of ITalImage8Grey, ITalImageColor, ITalImage16Grey and ITalImage16Range, that has
// no memory yet.
template <class Kind>
[[nodiscard]] ComPtr<Kind>
createImage(std::string_view what = "cannot create an image; is talxstd.dll registered?") {
    if constexpr (std::same_as<Kind, ITalImage8Grey>) {
        return create<Kind>(__uuidof(TalImage8Grey), what);
    } else if constexpr (std::same_as<Kind, ITalImageColor>) {
        return create<Kind>(__uuidof(TalImageColor), what);
    } else if constexpr (std::same_as<Kind, ITalImage16Grey>) {
        return create<Kind>(__uuidof(TalImage16Grey), what);
    } else {
        static_assert(std::same_as<Kind, ITalImage16Range>);
        return create<Kind>(__uuidof(TalImage16Range), what);
    }
}

// The memory of an image of talxstd.dll.
[[nodiscard]] inline ComPtr<ITalImageMemory> memoryOf(IUnknown* image) {
    ComPtr<ITalImageMemory> memory;
    check(image->QueryInterface(IID_PPV_ARGS(&memory)), "the image gives no access to its memory");
    return memory;
}

// Gives an image new memory of its own, all zero. planes: 1 for the grey kinds, 3 for colour, for range 1, or
// 2 with a mask.
inline void allocate(IUnknown* image, SIZE size, long planes) {
    const auto memory = memoryOf(image);
    check(memory->Allocate(size.cx, size.cy, planes), memory, "cannot allocate the image");
}

// Makes a plane of an image refer to other memory: 0 first, which sets the size and drops the other planes.
// Drawings that are under way on other threads go on with the memory from before.
template <class Pel>
void wrapPlane(IUnknown* image, long plane, SIZE size, Plane<Pel> pixels,
               const KeepAlive& keepAlive = nullptr) {
    const auto memory = memoryOf(image);
    check(memory->Wrap(plane, size.cx, size.cy, reinterpret_cast<__int64>(pixels.data), pixels.stride,
                       keepAlive.Get()),
          memory, "cannot wrap the image's memory");
}

// New images around the owner's memory, which is not copied: what is written there is what the next drawing
// shows. It must stay until keepAlive is released, or, without one, until nobody has the image any more.
// Engines only read it.

[[nodiscard]] inline ComPtr<ITalImage8Grey> wrap8Grey(SIZE size, Plane<std::uint8_t> grey,
                                                      const KeepAlive& keepAlive = nullptr) {
    auto image = createImage<ITalImage8Grey>();
    wrapPlane(image.Get(), 0, size, grey, keepAlive);
    return image;
}

[[nodiscard]] inline ComPtr<ITalImageColor> wrapColor(SIZE size, Plane<std::uint8_t> red,
                                                      Plane<std::uint8_t> green, Plane<std::uint8_t> blue,
                                                      const KeepAlive& keepAlive = nullptr) {
    auto image = createImage<ITalImageColor>();
    wrapPlane(image.Get(), 0, size, red, keepAlive);
    wrapPlane(image.Get(), 1, size, green, keepAlive);
    wrapPlane(image.Get(), 2, size, blue, keepAlive);
    return image;
}

// depth: how many low bits of each value count.
[[nodiscard]] inline ComPtr<ITalImage16Grey>
wrap16Grey(SIZE size, Plane<std::uint16_t> grey, TalDepthCode depth, const KeepAlive& keepAlive = nullptr) {
    auto image = createImage<ITalImage16Grey>();
    wrapPlane(image.Get(), 0, size, grey, keepAlive);
    check(image->put_DepthCode(depth), image, "cannot set the image's depth");
    return image;
}

// mask: a byte for each value, 0 where the value is hidden; without data, there is none.
[[nodiscard]] inline ComPtr<ITalImage16Range> wrap16Range(SIZE size, Plane<std::uint16_t> values,
                                                          Plane<std::uint8_t> mask = {},
                                                          const KeepAlive& keepAlive = nullptr) {
    auto image = createImage<ITalImage16Range>();
    wrapPlane(image.Get(), 0, size, values, keepAlive);
    if (mask.data) {
        wrapPlane(image.Get(), 1, size, mask, keepAlive);
    }
    return image;
}

// Access to the pixels of one plane of an image of talxstd.dll for the length of a scope, during which the
// memory stays. Any thread may have one; who writes pixels while others read them is the owner's affair.
class PlaneAccess {
public:
    PlaneAccess(IUnknown* image, long plane, TalPelAccessMode mode)
        : PlaneAccess(memoryOf(image), plane, mode) {
        __int64 data = 0; // what fails from here on unlocks
        check(access_->get_Data(&data), access_, "cannot find the image's pixels");
        check(access_->get_RowStride(&stride_), access_, "cannot find the image's rows");
        data_ = reinterpret_cast<std::byte*>(data);
    }
    ~PlaneAccess() { access_->Unlock(); }
    PlaneAccess(const PlaneAccess&) = delete;
    PlaneAccess& operator=(const PlaneAccess&) = delete;

    // Row y from the top; Pel as the plane's kind has it.
    template <class Pel>
    [[nodiscard]] Pel* row(long y) const {
        return reinterpret_cast<Pel*>(data_ + static_cast<std::ptrdiff_t>(stride_) * y);
    }

private:
    PlaneAccess(const ComPtr<ITalImageMemory>& memory, long plane, TalPelAccessMode mode) {
        check(memory->CreatePlaneAccess(plane, mode, &access_), memory, "cannot reach the image's memory");
    }

    ComPtr<ITalPelAccess> access_;
    std::byte* data_ = nullptr;
    long stride_ = 0;
};

} // namespace talxrend
