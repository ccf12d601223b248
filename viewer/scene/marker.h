// The icon that marks a place: a ring with a dot, soft at its edges.
#pragma once

#include <talxrend.hpp>

namespace talview {

class Marker {
public:
    static constexpr long size = 25; // width and height; the marked place is the middle of the middle pixel

    // palettised: for a layer that cannot blend; the marker has hard edges then.
    explicit Marker(bool palettised);

    [[nodiscard]] ITalImage8Grey* icon() const { return icon_.Get(); }
    [[nodiscard]] talxrend::SafeArray& colors() { return colors_; }
    [[nodiscard]] talxrend::SafeArray& transparencies() { return transparencies_; }

private:
    talxrend::ComPtr<ITalImage8Grey> icon_;
    talxrend::SafeArray colors_;
    talxrend::SafeArray transparencies_;
};

} // namespace talview
