// What talview must show, drawn by the plain model: view_model OUT BITS SOURCE OPTION...
//
// The options are talview's own, with a picture that begins with its file's name for a person only: SOURCE is
// the same picture as PGM or PPM (a range picture's mask, which --mask names, is PGM itself). BITS is 15, 16
// or 32, the format of what is compared. OUT.ppm gets the view, OUT.pgm white where it says what must be
// there, and black, as in OUT.ppm too, where texts may stand.
#include "tests/model/model.h"
#include "viewer/view/failure.h"
#include "viewer/view/pixel_grid.h"
#include "viewer/view/view.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

using namespace talview;
namespace model = talx::model;

struct Pnm {
    int channels = 1, width = 0, height = 0, most = 255;
    std::vector<std::uint16_t> values;
};

Pnm readPnm(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    char kind[2]{};
    Pnm pnm;
    file.read(kind, 2) >> pnm.width >> pnm.height >> pnm.most;
    file.get();
    pnm.channels = kind[1] == '6' ? 3 : 1;
    pnm.values.resize(static_cast<std::size_t>(pnm.channels) * pnm.width * pnm.height);
    for (std::uint16_t& value : pnm.values) {
        value = static_cast<std::uint16_t>(file.get());
        if (pnm.most > 255) {
            value = static_cast<std::uint16_t>(value << 8 | file.get());
        }
    }
    return file ? pnm : throw std::runtime_error("cannot read " + path);
}

model::Plane planeOf(const Pnm& pnm, int channel) {
    model::Plane plane{pnm.width, pnm.height, {}};
    for (std::size_t i = channel; i < pnm.values.size(); i += pnm.channels) {
        plane.pixels.push_back(pnm.values[i]);
    }
    return plane;
}

template <class Pel>
Block<Pel> blockOf(const model::Plane& plane) {
    Block<Pel> block(plane.pixels.size());
    std::copy(plane.pixels.begin(), plane.pixels.end(), block.data());
    return block;
}

// The same picture for the state of the view and for the model.
struct Source {
    Source(const std::string& path, const Options& options) {
        const Pnm pnm = readPnm(path);
        const bool isDeep = pnm.most > 255;
        picture.kind = pnm.channels == 3 ? PictureKind::color
                       : !isDeep         ? PictureKind::grey8
                       : options.range   ? PictureKind::range16
                                         : PictureKind::grey16;
        image.kind = pnm.channels == 3 ? model::Kind::color
                     : !isDeep         ? model::Kind::grey8
                     : options.range   ? model::Kind::range16
                                       : model::Kind::grey16;
        picture.width = pnm.width;
        picture.height = pnm.height;
        picture.depth = isDeep ? 16 : 8;
        image.depthCode = 4; // 16 bits
        for (int channel = 0; channel < pnm.channels; ++channel) {
            image.planes.push_back(planeOf(pnm, channel));
            isDeep ? void(picture.words = blockOf<std::uint16_t>(image.planes[0]))
                   : void(picture.bytes[channel] = blockOf<std::uint8_t>(image.planes[channel]));
        }
        if (!options.mask.empty()) {
            image.planes.push_back(planeOf(readPnm(utf8(options.mask)), 0));
            picture.mask = blockOf<std::uint8_t>(image.planes[1]);
        }
        if (options.heights) {
            picture.rescale(*options.heights);
        }
    }
    Picture picture;
    model::Image image;
};

model::Color colorOf(std::uint32_t rgb) {
    return {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
            static_cast<std::uint8_t>(rgb)};
}

struct Drawing {
    model::Buffer buffer;
    std::vector<bool> counts; // what is compared

    void fill(const Box& box, model::Color color) {
        for (long y = std::max(box.top, 0L); y < std::min<long>(box.bottom, buffer.height); ++y) {
            for (long x = std::max(box.left, 0L); x < std::min<long>(box.right, buffer.width); ++x) {
                buffer.at(x, y) = model::pack(buffer.format, color);
            }
        }
    }
    void ignore(const Box& box) {
        for (long y = std::max(box.top, 0L); y < std::min<long>(box.bottom, buffer.height); ++y) {
            for (long x = std::max(box.left, 0L); x < std::min<long>(box.right, buffer.width); ++x) {
                counts[static_cast<std::size_t>(buffer.width) * y + x] = false;
            }
        }
    }
};

void drawGrid(Drawing& drawing, const View& view) {
    const Placement& at = view.placement();
    if (!view.overlays().grid || at.scale() <= gridScale) {
        return;
    }
    const PixelAxis columns(at.left(), view.picture()->width, at.scale(), view.isCentre());
    const PixelAxis rows(at.top(), view.picture()->height, at.scale(), view.isCentre());
    const auto xs = columns.lines(0, drawing.buffer.width);
    const auto ys = rows.lines(0, drawing.buffer.height);
    for (const long x : xs) {
        drawing.fill({x, at.top(), x + 1, rows.end()}, {96, 96, 96});
    }
    for (const long y : ys) {
        drawing.fill({at.left(), y, columns.end(), y + 1}, {96, 96, 96});
    }
    if (at.scale() > valuesScale) { // texts stay away from the grid
        for (long x = columns.pixelAt(0); x <= columns.pixelAt(drawing.buffer.width); ++x) {
            for (long y = rows.pixelAt(0); y <= rows.pixelAt(drawing.buffer.height); ++y) {
                drawing.ignore({columns.beginOf(x) + 2, rows.beginOf(y) + 2, columns.beginOf(x + 1) - 1,
                                rows.beginOf(y + 1) - 1});
            }
        }
    }
}

Drawing draw(View& view, const model::Image& image, int bits) {
    const Box extent = view.extent();
    const auto size = static_cast<std::size_t>(extent.width()) * extent.height();
    Drawing drawing{{bits, static_cast<int>(extent.width()), static_cast<int>(extent.height()),
                     std::vector<std::uint32_t>(size)},
                    std::vector<bool>(size, true)};
    drawing.fill(extent, {40, 44, 52});
    model::ColorState colors;
    const Coloring& coloring = view.coloring();
    for (const auto rgb :
         colorTable(*coloring.map, view.picture()->valueCount(), coloring.limits, coloring.flags)) {
        for (auto* entries : {&colors.grey8, &colors.grey16, &colors.range16}) {
            entries->push_back(colorOf(rgb));
        }
    }
    colors.maskEnabled = view.masking().isOn;
    colors.maskColor = view.masking().color;
    const model::Rect whole{0, 0, extent.right, extent.bottom};
    const Placement& at = view.placement();
    drawImage(drawing.buffer, image, colors, static_cast<std::int32_t>(at.left()),
              static_cast<std::int32_t>(at.top()), at.scale(), whole,
              view.isCentre() ? model::centreMethod : model::nearestMethod);
    drawGrid(drawing, view);
    const std::vector<std::uint8_t> pels = markerPels();
    model::Icon icon{{markerSize, markerSize, {pels.begin(), pels.end()}}, {}, {}};
    icon.colors.fill({markerRed, markerGreen, markerBlue});
    const auto transparencies = markerTransparencies(false);
    std::copy(transparencies.begin(), transparencies.end(), icon.transparency.begin());
    for (const Point& marker : view.markers()) {
        const Box box = view.markerBox(marker);
        drawIcon(drawing.buffer, icon, box.left, box.top, 1, whole, {});
    }
    return drawing;
}

void write(const Drawing& drawing, const std::string& out) {
    const model::Buffer& buffer = drawing.buffer;
    std::ofstream view(out + ".ppm", std::ios::binary);
    std::ofstream counts(out + ".pgm", std::ios::binary);
    view << "P6 " << buffer.width << " " << buffer.height << " 255\n";
    counts << "P5 " << buffer.width << " " << buffer.height << " 255\n";
    for (std::size_t i = 0; i < buffer.pixels.size(); ++i) {
        const std::uint32_t pixel = drawing.counts[i] ? buffer.pixels[i] : 0;
        const auto channel = [&](int shift, int size) {
            const std::uint32_t value = pixel >> shift & ((1u << size) - 1);
            view.put(static_cast<char>(size == 8 ? value : value << (8 - size) | value >> (2 * size - 8)));
        };
        const bool isDeep = buffer.format >= 24;
        channel(isDeep ? 16 : buffer.format == 16 ? 11 : 10, isDeep ? 8 : 5);
        channel(isDeep ? 8 : 5, isDeep ? 8 : buffer.format == 16 ? 6 : 5);
        channel(0, isDeep ? 8 : 5);
        counts.put(static_cast<char>(drawing.counts[i] ? 255 : 0));
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc < 5) {
            throw std::runtime_error("view_model OUT BITS SOURCE OPTION...");
        }
        std::vector<std::wstring> arguments;
        std::transform(argv + 4, argv + argc, std::back_inserter(arguments), wide);
        const Options options = parseOptions(arguments);
        const Source source(argv[3], options);
        View view(options);
        view.resize(options.width, options.height);
        view.setPicture(source.picture, false);
        write(draw(view, source.image, std::stoi(argv[2])), argv[1]);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "view_model: %s\n", failure.what());
        return 1;
    }
}
