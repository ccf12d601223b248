// The icon that marks a place: a ring with a dot, soft at its edges.
#pragma once

#include "talxstd.h"
#include "viewer/safe_array.h"

#include <wrl/client.h>

namespace talview {

class Marker {
public:
    static constexpr long size = 25; // width and height; the marked place is the middle of the middle pixel

    // palettised: for a layer that cannot blend; the marker has hard edges then.
    explicit Marker(bool palettised);

    [[nodiscard]] ITalImage8Grey* icon() const { return icon_.Get(); }
    [[nodiscard]] SAFEARRAY** colors() { return colors_.address(); }
    [[nodiscard]] SAFEARRAY** transparencies() { return transparencies_.address(); }

private:
    Microsoft::WRL::ComPtr<ITalImage8Grey> icon_;
    SafeArray colors_;
    SafeArray transparencies_;
};

} // namespace talview
