// Grey rows that are taken as they are, and the choice among the ways.
#include "viewer/files/raw_rows.h"

#include <algorithm>

namespace talview {
namespace {

// Signed values are moved so that the smallest possible one is 0; the scale leads back.
template <class Pel>
class GreyRows final : public RawRows {
public:
    GreyRows(PictureKind kind, long width, long height, int depth, bool isSigned)
        : picture_(detail::sized(kind, width, height, depth)), isSigned_(isSigned) {
        block() = Block<Pel>(picture_.at(0, height));
        if (isSigned) {
            picture_.scale.offset = -signBit;
        }
    }

    std::uint8_t* place(long first, long /*count*/) override {
        return reinterpret_cast<std::uint8_t*>(block().data() + picture_.at(0, first));
    }

    void convert(long first, long count) override {
        if (isSigned_) {
            for (std::size_t i = picture_.at(0, first); i < picture_.at(0, first + count); ++i) {
                block()[i] ^= signBit;
            }
        }
    }

    Picture finish(long rows) override {
        std::fill(block().data() + picture_.at(0, rows), block().data() + block().size(), Pel{});
        return std::move(picture_);
    }

private:
    static constexpr int signBit = 1 << (8 * sizeof(Pel) - 1);

    Block<Pel>& block() {
        if constexpr (sizeof(Pel) == 1) {
            return picture_.bytes[0];
        } else {
            return picture_.words;
        }
    }

    Picture picture_;
    bool isSigned_;
};

} // namespace

namespace detail {

Picture sized(PictureKind kind, long width, long height, int depth) {
    Picture picture;
    picture.kind = kind;
    picture.width = width;
    picture.height = height;
    picture.depth = depth;
    return picture;
}

std::uint8_t square(long x, long y) {
    return (x / 8 + y / 8) % 2 == 0 ? lightSquare : darkSquare;
}

} // namespace detail

std::unique_ptr<RawRows> rawRows(const RawFormat& format, long width, long height, int depth,
                                 const std::vector<std::uint32_t>& palette) {
    const bool isWhole = format.sample == Sample::whole || format.sample == Sample::signedWhole;
    const bool isSigned = format.sample == Sample::signedWhole;
    if (isWhole && format.colors == Colors::grey && format.bits == 8) {
        return std::make_unique<GreyRows<std::uint8_t>>(PictureKind::grey8, width, height, 8, isSigned);
    }
    if (isWhole && format.colors == Colors::grey && format.bits == 16) {
        return std::make_unique<GreyRows<std::uint16_t>>(PictureKind::grey16, width, height,
                                                         isSigned ? 16 : depth, isSigned);
    }
    if (isWhole && format.bits <= 16) {
        return detail::colorRows(format, width, height, depth, palette);
    }
    return detail::realRows(format, width, height);
}

} // namespace talview
