// Access to the pixels of a DirectDraw surface for the length of a scope.
#pragma once

#include "ddraw_engine/direct_draw.h"

#include <cstdint>

namespace talx {

class SurfaceLock {
public:
    // Locks the whole surface, restoring it first if it is lost. A null surface throws _com_error(E_FAIL).
    explicit SurfaceLock(IDirectDrawSurface* surface) : surface_(surface) {
        if (!surface) {
            raise(E_FAIL);
        }
        restoreIfLost(surface);
        auto description = sizedStructure<DDSURFACEDESC>();
        result_ = surface->Lock(nullptr, &description, DDLOCK_WAIT, nullptr);
        locked_ = SUCCEEDED(result_) ? description.lpSurface : nullptr;
        if (SUCCEEDED(result_) && !locked_) {
            result_ = E_POINTER;
        }
        if (SUCCEEDED(result_) && !holdsRows(description)) {
            result_ = E_FAIL; // its rows would lie over each other
        }
        if (SUCCEEDED(result_)) {
            bits_ = static_cast<std::uint8_t*>(description.lpSurface);
            pitch_ = description.lPitch;
            extent_ = {static_cast<std::int32_t>(description.dwWidth),
                       static_cast<std::int32_t>(description.dwHeight)};
            bytesPerPixel_ = talx::bytesPerPixel(description);
        }
    }
    // Also after a lock that failed.
    ~SurfaceLock() { surface_->Unlock(locked_); }
    SurfaceLock(const SurfaceLock&) = delete;
    SurfaceLock& operator=(const SurfaceLock&) = delete;

    // That of the lock. After a failure the other values are zero.
    [[nodiscard]] HRESULT result() const { return result_; }
    [[nodiscard]] std::uint8_t* bits() const { return bits_; }  // top left pixel
    [[nodiscard]] std::int32_t pitch() const { return pitch_; } // bytes from row to row
    [[nodiscard]] Extent extent() const { return extent_; }
    [[nodiscard]] int bytesPerPixel() const { return bytesPerPixel_; }

private:
    Microsoft::WRL::ComPtr<IDirectDrawSurface> surface_;
    HRESULT result_ = E_FAIL;
    void* locked_ = nullptr; // what Lock gave
    std::uint8_t* bits_ = nullptr;
    std::int32_t pitch_ = 0;
    Extent extent_;
    int bytesPerPixel_ = 0;
};

} // namespace talx
