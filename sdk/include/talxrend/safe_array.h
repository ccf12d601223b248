// Colour maps as the engines take and give them.
#pragma once

#include "talxrend/failure.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <vector>

namespace talxrend {

// A one-dimensional SAFEARRAY with the lower bound 0, or none.
class SafeArray {
public:
    SafeArray() = default;
    // Words 0x00RRGGBB of a colour map, or OLE colours 0x00BBGGRR of an icon.
    explicit SafeArray(std::span<const std::uint32_t> colors) : SafeArray(VT_I4, std::as_bytes(colors), 4) {}
    // The transparencies of an icon in per cent.
    explicit SafeArray(std::span<const std::uint8_t> bytes) : SafeArray(VT_UI1, std::as_bytes(bytes), 1) {}
    ~SafeArray() { SafeArrayDestroy(array_); }
    SafeArray(SafeArray&& other) noexcept : array_(std::exchange(other.array_, nullptr)) {}
    SafeArray& operator=(SafeArray&& other) noexcept {
        std::swap(array_, other.array_);
        return *this;
    }

    // As an [in] argument. The engine changes nothing.
    [[nodiscard]] SAFEARRAY** address() { return &array_; }
    // As an [out] argument: what it held is destroyed.
    [[nodiscard]] SAFEARRAY** put() {
        SafeArrayDestroy(std::exchange(array_, nullptr));
        return &array_;
    }

    // The elements; none without an array. Throws a Failure if they are not 4 bytes each.
    [[nodiscard]] std::vector<std::uint32_t> colors() const {
        LONG last = -1;
        if (!array_ || SafeArrayGetDim(array_) != 1 ||
            SafeArrayGetElemsize(array_) != sizeof(std::uint32_t)) {
            check(array_ ? DISP_E_TYPEMISMATCH : S_OK, "cannot read a colour map");
            return {};
        }
        check(SafeArrayGetUBound(array_, 1, &last), "cannot read a colour map");
        std::vector<std::uint32_t> colors(last + 1);
        if (!colors.empty()) {
            void* data = nullptr;
            check(SafeArrayAccessData(array_, &data), "cannot read a colour map");
            std::memcpy(colors.data(), data, colors.size() * sizeof colors[0]);
            SafeArrayUnaccessData(array_);
        }
        return colors;
    }

private:
    SafeArray(VARTYPE type, std::span<const std::byte> bytes, ULONG elementSize)
        : array_(SafeArrayCreateVector(type, 0, static_cast<ULONG>(bytes.size() / elementSize))) {
        if (!array_) {
            throw std::bad_alloc();
        }
        if (!bytes.empty()) {
            std::memcpy(array_->pvData, bytes.data(), bytes.size());
        }
    }

    SAFEARRAY* array_ = nullptr;
};

} // namespace talxrend
