// Pixel formats.
#include "viewer/files/wic_formats.h"

namespace talview {
namespace {

constexpr Alpha straight = Alpha::straight;
constexpr Alpha premultiplied = Alpha::premultiplied;

struct Entry {
    const GUID& format;
    RawFormat raw;
};

const Entry entries[] = {
    {GUID_WICPixelFormatBlackWhite, {Colors::grey, 1, 1}},
    {GUID_WICPixelFormat2bppGray, {Colors::grey, 1, 2}},
    {GUID_WICPixelFormat4bppGray, {Colors::grey, 1, 4}},
    {GUID_WICPixelFormat8bppGray, {Colors::grey, 1, 8}},
    {GUID_WICPixelFormat16bppGray, {Colors::grey, 1, 16}},
    {GUID_WICPixelFormat1bppIndexed, {Colors::palette, 1, 1}},
    {GUID_WICPixelFormat2bppIndexed, {Colors::palette, 1, 2}},
    {GUID_WICPixelFormat4bppIndexed, {Colors::palette, 1, 4}},
    {GUID_WICPixelFormat8bppIndexed, {Colors::palette, 1, 8}},
    {GUID_WICPixelFormat24bppBGR, {Colors::bgr, 3, 8}},
    {GUID_WICPixelFormat24bppRGB, {Colors::rgb, 3, 8}},
    {GUID_WICPixelFormat32bppBGR, {Colors::bgr, 4, 8}},
    {GUID_WICPixelFormat32bppRGB, {Colors::rgb, 4, 8}},
    {GUID_WICPixelFormat32bppBGRA, {Colors::bgr, 4, 8, Sample::whole, straight}},
    {GUID_WICPixelFormat32bppRGBA, {Colors::rgb, 4, 8, Sample::whole, straight}},
    {GUID_WICPixelFormat32bppPBGRA, {Colors::bgr, 4, 8, Sample::whole, premultiplied}},
    {GUID_WICPixelFormat32bppPRGBA, {Colors::rgb, 4, 8, Sample::whole, premultiplied}},
    {GUID_WICPixelFormat48bppRGB, {Colors::rgb, 3, 16}},
    {GUID_WICPixelFormat48bppBGR, {Colors::bgr, 3, 16}},
    {GUID_WICPixelFormat64bppRGB, {Colors::rgb, 4, 16}},
    {GUID_WICPixelFormat64bppRGBA, {Colors::rgb, 4, 16, Sample::whole, straight}},
    {GUID_WICPixelFormat64bppBGRA, {Colors::bgr, 4, 16, Sample::whole, straight}},
    {GUID_WICPixelFormat64bppPRGBA, {Colors::rgb, 4, 16, Sample::whole, premultiplied}},
    {GUID_WICPixelFormat64bppPBGRA, {Colors::bgr, 4, 16, Sample::whole, premultiplied}},
    {GUID_WICPixelFormat32bppCMYK, {Colors::cmyk, 4, 8}},
    {GUID_WICPixelFormat64bppCMYK, {Colors::cmyk, 4, 16}},
    {GUID_WICPixelFormat16bppGrayHalf, {Colors::grey, 1, 16, Sample::real}},
    {GUID_WICPixelFormat32bppGrayFloat, {Colors::grey, 1, 32, Sample::real}},
    {GUID_WICPixelFormat48bppRGBHalf, {Colors::rgb, 3, 16, Sample::real}},
    {GUID_WICPixelFormat64bppRGBHalf, {Colors::rgb, 4, 16, Sample::real}},
    {GUID_WICPixelFormat64bppRGBAHalf, {Colors::rgb, 4, 16, Sample::real, straight}},
    {GUID_WICPixelFormat64bppPRGBAHalf, {Colors::rgb, 4, 16, Sample::real, premultiplied}},
    {GUID_WICPixelFormat96bppRGBFloat, {Colors::rgb, 3, 32, Sample::real}},
    {GUID_WICPixelFormat128bppRGBFloat, {Colors::rgb, 4, 32, Sample::real}},
    {GUID_WICPixelFormat128bppRGBAFloat, {Colors::rgb, 4, 32, Sample::real, straight}},
    {GUID_WICPixelFormat128bppPRGBAFloat, {Colors::rgb, 4, 32, Sample::real, premultiplied}},
    {GUID_WICPixelFormat16bppGrayFixedPoint, {Colors::grey, 1, 16, Sample::fixedPoint}},
    {GUID_WICPixelFormat32bppGrayFixedPoint, {Colors::grey, 1, 32, Sample::fixedPoint}},
    {GUID_WICPixelFormat48bppRGBFixedPoint, {Colors::rgb, 3, 16, Sample::fixedPoint}},
    {GUID_WICPixelFormat48bppBGRFixedPoint, {Colors::bgr, 3, 16, Sample::fixedPoint}},
    {GUID_WICPixelFormat64bppRGBFixedPoint, {Colors::rgb, 4, 16, Sample::fixedPoint}},
    {GUID_WICPixelFormat64bppRGBAFixedPoint, {Colors::rgb, 4, 16, Sample::fixedPoint, straight}},
    {GUID_WICPixelFormat64bppBGRAFixedPoint, {Colors::bgr, 4, 16, Sample::fixedPoint, straight}},
    {GUID_WICPixelFormat96bppRGBFixedPoint, {Colors::rgb, 3, 32, Sample::fixedPoint}},
    {GUID_WICPixelFormat128bppRGBFixedPoint, {Colors::rgb, 4, 32, Sample::fixedPoint}},
    {GUID_WICPixelFormat128bppRGBAFixedPoint, {Colors::rgb, 4, 32, Sample::fixedPoint, straight}},
};

} // namespace

std::optional<RawFormat> rawFormat(const GUID& format) {
    for (const Entry& entry : entries) {
        if (entry.format == format) {
            return entry.raw;
        }
    }
    return std::nullopt;
}

} // namespace talview
