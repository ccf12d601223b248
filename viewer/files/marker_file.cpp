// The file's text.
#include "viewer/files/marker_file.h"

#include "viewer/files/text_file.h"
#include "viewer/view/failure.h"
#include "viewer/view/marker_text.h"

namespace talview {

std::wstring markersBeside(const std::wstring& picture) {
    return picture + L".markers.csv";
}

std::vector<Point> readMarkers(const std::wstring& path) {
    const std::string text = readText(path);
    try {
        return parseMarkers(text);
    } catch (const Failure& failure) {
        throw Failure("cannot read markers of " + utf8(path) + ": " + failure.what());
    }
}

void writeMarkers(const std::wstring& path, const std::vector<Point>& markers) {
    writeText(path, formatMarkers(markers));
}

} // namespace talview
