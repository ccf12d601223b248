#include "bench/peers.h"

#include <array>
#include <cstring>
#include <memory>

#ifdef TALX_LIBYUV
#include <libyuv.h>
#endif
#ifdef TALX_PIXMAN
#include <pixman.h>
#endif
#ifdef TALX_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace talx::bench {
namespace {

// The loop that anybody writes by hand: unrolled by four.
template <class Entry, class Index>
void lookUp(std::uint8_t* out, const Index* source, std::size_t pixels, const Entry* table) {
    auto* pixel = reinterpret_cast<Entry*>(out);
    for (std::size_t i = 0; i < pixels; i += 4) {
        const Entry p0 = table[source[i]], p1 = table[source[i + 1]], p2 = table[source[i + 2]],
                    p3 = table[source[i + 3]];
        pixel[i] = p0;
        pixel[i + 1] = p1;
        pixel[i + 2] = p2;
        pixel[i + 3] = p3;
    }
}

template <class Index>
Way loop(PixelFormat format, const Index* source, Extent extent, const void* table) {
    const std::size_t pixels = std::size_t(extent.width) * extent.height;
    switch (bytesPerPixel(format)) {
    case 2:
        return {"loop", [=](std::uint8_t* out) {
                    lookUp(out, source, pixels, static_cast<const std::uint16_t*>(table));
                }};
    case 3:
        return {"loop", [=](std::uint8_t* out) {
                    lookUp(out, source, pixels, static_cast<const ColorEntry*>(table));
                }};
    case 4:
        return {"loop", [=](std::uint8_t* out) {
                    lookUp(out, source, pixels, static_cast<const std::uint32_t*>(table));
                }};
    default:
        return {"loop", [=](std::uint8_t* out) {
                    lookUp(out, source, pixels, static_cast<const std::uint8_t*>(table));
                }};
    }
}

#ifdef TALX_OPENCV
// Rows follow each other without a gap.
cv::Mat matrix(Extent extent, int type, const void* pixels) {
    return {extent.height, extent.width, type, const_cast<void*>(pixels)};
}
#endif

} // namespace

Ways peersOfGrey8(PixelFormat format, const std::uint8_t* source, Extent extent, const void* table) {
    Ways ways{loop(format, source, extent, table)};
#ifdef TALX_LIBYUV
    if (format == PixelFormat::Rgb32) {
        ways.push_back({"libyuv (grey only)", [=](std::uint8_t* out) {
                            libyuv::J400ToARGB(source, extent.width, out, 4 * extent.width, extent.width,
                                               extent.height);
                        }});
    }
#endif
#ifdef TALX_OPENCV
    if (format == PixelFormat::Rgb24) {
        ways.push_back(
            {"OpenCV", [=](std::uint8_t* out) {
                 cv::Mat to = matrix(extent, CV_8UC3, out);
                 cv::applyColorMap(matrix(extent, CV_8UC1, source), to, matrix({1, 256}, CV_8UC3, table));
             }});
    } else if (format == PixelFormat::Pal8) {
        ways.push_back({"OpenCV", [=](std::uint8_t* out) {
                            cv::Mat to = matrix(extent, CV_8UC1, out);
                            cv::LUT(matrix(extent, CV_8UC1, source), matrix({256, 1}, CV_8UC1, table), to);
                        }});
    }
#endif
    return ways;
}

Ways peersOfGrey16(PixelFormat format, const std::uint16_t* source, Extent extent, const void* table) {
    return {loop(format, source, extent, table)};
}

Ways peersOfColor([[maybe_unused]] PixelFormat format, [[maybe_unused]] const std::uint8_t* red,
                  [[maybe_unused]] const std::uint8_t* green, [[maybe_unused]] const std::uint8_t* blue,
                  [[maybe_unused]] Extent extent) {
    Ways ways;
    [[maybe_unused]] const int w = extent.width, h = extent.height;
#ifdef TALX_LIBYUV
    if (format == PixelFormat::Rgb32) {
        ways.push_back({"libyuv", [=](std::uint8_t* out) {
                            libyuv::MergeARGBPlane(red, w, green, w, blue, w, nullptr, 0, out, 4 * w, w, h);
                        }});
    } else if (format == PixelFormat::Rgb24) {
        // Its RGB is red first.
        ways.push_back({"libyuv", [=](std::uint8_t* out) {
                            libyuv::MergeRGBPlane(blue, w, green, w, red, w, out, 3 * w, w, h);
                        }});
    } else if (format == PixelFormat::Rgb16) {
        const auto words = std::make_shared<std::vector<std::uint8_t>>(std::size_t(4) * w);
        ways.push_back({"libyuv (by rows of 32 bits)", [=](std::uint8_t* out) {
                            for (std::ptrdiff_t y = 0; y < h; ++y) {
                                libyuv::MergeARGBPlane(red + y * w, w, green + y * w, w, blue + y * w, w,
                                                       nullptr, 0, words->data(), 4 * w, w, 1);
                                libyuv::ARGBToRGB565(words->data(), 4 * w, out + 2 * y * w, 2 * w, w, 1);
                            }
                        }});
    }
#endif
#ifdef TALX_OPENCV
    if (format == PixelFormat::Rgb24) {
        ways.push_back({"OpenCV", [=](std::uint8_t* out) {
                            const cv::Mat planes[] = {matrix(extent, CV_8UC1, blue),
                                                      matrix(extent, CV_8UC1, green),
                                                      matrix(extent, CV_8UC1, red)};
                            cv::Mat to = matrix(extent, CV_8UC3, out);
                            cv::merge(planes, 3, to);
                        }});
    }
#endif
    return ways;
}

Ways peersOfNearest([[maybe_unused]] int bytesPerPixel, [[maybe_unused]] const std::uint8_t* source,
                    [[maybe_unused]] Extent extent, [[maybe_unused]] Extent scaled) {
    Ways ways;
#ifdef TALX_OPENCV
    ways.push_back({"OpenCV", [=](std::uint8_t* out) {
                        const int type = bytesPerPixel == 1 ? CV_8UC1 : CV_16UC1;
                        cv::Mat to = matrix(scaled, type, out);
                        cv::resize(matrix(extent, type, source), to, to.size(), 0, 0, cv::INTER_NEAREST);
                    }});
#endif
#ifdef TALX_LIBYUV
    ways.push_back(
        {"libyuv", [=](std::uint8_t* out) {
             if (bytesPerPixel == 1) {
                 libyuv::ScalePlane(source, extent.width, extent.width, extent.height, out, scaled.width,
                                    scaled.width, scaled.height, libyuv::kFilterNone);
             } else {
                 libyuv::ScalePlane_16(reinterpret_cast<const std::uint16_t*>(source), extent.width,
                                       extent.width, extent.height, reinterpret_cast<std::uint16_t*>(out),
                                       scaled.width, scaled.width, scaled.height, libyuv::kFilterNone);
             }
         }});
#endif
    return ways;
}

Ways peersOfBlend([[maybe_unused]] const std::uint8_t* icon, [[maybe_unused]] Extent extent,
                  [[maybe_unused]] const std::uint32_t* colors,
                  [[maybe_unused]] const std::uint8_t* weights) {
    Ways ways;
#if defined TALX_LIBYUV || defined TALX_PIXMAN
    // Both blend premultiplied pixels by an opacity of 255ths, a row at a time as long as the caches hold it.
    std::array<std::uint32_t, 256> table;
    for (std::size_t i = 0; i < 256; ++i) {
        const std::uint32_t opacity = (128u - weights[i]) * 255 / 128;
        table[i] = opacity << 24;
        for (int shift = 0; shift < 24; shift += 8)
            table[i] |= (colors[i] >> shift & 0xFF) * opacity / 255 << shift;
    }
    const auto row = std::make_shared<std::vector<std::uint32_t>>(extent.width);
    [[maybe_unused]] const int w = extent.width, h = extent.height;
#endif
#ifdef TALX_LIBYUV
    ways.push_back({"libyuv", [=](std::uint8_t* out) {
                        auto* words = reinterpret_cast<std::uint8_t*>(row->data());
                        for (std::ptrdiff_t y = 0; y < h; ++y) {
                            lookUp(words, icon + y * w, std::size_t(w), table.data());
                            libyuv::ARGBBlend(words, 4 * w, out + 4 * y * w, 4 * w, out + 4 * y * w, 4 * w, w,
                                              1);
                        }
                    }});
#endif
#ifdef TALX_PIXMAN
    ways.push_back(
        {"pixman", [=](std::uint8_t* out) {
             auto* words = reinterpret_cast<std::uint8_t*>(row->data());
             pixman_image_t* from = pixman_image_create_bits(PIXMAN_a8r8g8b8, w, 1, row->data(), 4 * w);
             pixman_image_t* to = pixman_image_create_bits(PIXMAN_x8r8g8b8, w, h,
                                                           reinterpret_cast<std::uint32_t*>(out), 4 * w);
             for (int y = 0; y < h; ++y) {
                 lookUp(words, icon + std::ptrdiff_t{y} * w, std::size_t(w), table.data());
                 pixman_image_composite32(PIXMAN_OP_OVER, from, nullptr, to, 0, 0, 0, 0, 0, y, w, 1);
             }
             pixman_image_unref(from);
             pixman_image_unref(to);
         }});
#endif
    return ways;
}

} // namespace talx::bench
