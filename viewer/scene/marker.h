// The marker as an icon that engines draw.
#pragma once

#include <talxrend.hpp>

namespace talview {

class Marker {
public:
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
