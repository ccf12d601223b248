// The icon's image and its colours.
#include "viewer/scene/marker.h"

#include "viewer/files/image.h"
#include "viewer/view/marker_shape.h"

#include <algorithm>

namespace talview {

Marker::Marker(bool palettised)
    : colors_(std::vector<std::uint32_t>(256, RGB(markerRed, markerGreen, markerBlue))),
      transparencies_(markerTransparencies(palettised)) {
    const std::vector<std::uint8_t> pels = markerPels();
    Picture picture;
    picture.width = markerSize;
    picture.height = markerSize;
    picture.bytes[0] = Block<std::uint8_t>(pels.size());
    std::copy(pels.begin(), pels.end(), picture.bytes[0].data());
    const Image image(std::move(picture));
    talxrend::check(image.object()->QueryInterface(IID_PPV_ARGS(&icon_)), "the marker is not an icon");
}

} // namespace talview
