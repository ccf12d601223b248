// The few conversions between the interface's types and the platform's.
#pragma once

#include "render/pixels/geometry.h"

#include <windows.h>

namespace talx {

[[nodiscard]] inline RECT toRECT(const Rect& r) {
    return {r.left, r.top, r.right, r.bottom};
}

// Handles travel as 64-bit integers.
template <class Handle>
[[nodiscard]] Handle toHandle(__int64 value) {
    return reinterpret_cast<Handle>(static_cast<INT_PTR>(value));
}

template <class Handle>
[[nodiscard]] __int64 fromHandle(Handle handle) {
    return reinterpret_cast<INT_PTR>(handle);
}

} // namespace talx
