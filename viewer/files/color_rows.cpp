// Whole numbers of 8 or 16 bits in several channels, and indices of a palette.
#include "viewer/files/raw_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace talview {
namespace {

using std::uint16_t;
using std::uint8_t;

// Red, green, blue and alpha, up to 255 or up to 65535.
using Pel = std::array<uint16_t, 4>;

// The picture is grey and opaque until a pixel shows that it is not; what is there then is carried over.
class ColorRows final : public RawRows {
public:
    ColorRows(const RawFormat& format, long width, long height, int depth,
              const std::vector<std::uint32_t>& palette)
        : format_(format), width_(width), height_(height), depth_(format.bits == 16 ? depth : 8),
          most_(format.bits == 16 ? 65535 : 255), table_(tableOf(format, palette)),
          picture_(blank(false, false)) {}

    uint8_t* place(long /*first*/, long count) override {
        buffer_.resize(format_.stride(width_) * count);
        return buffer_.data();
    }

    void convert(long first, long count) override {
        const uint8_t* row = buffer_.data();
        for (long y = first; y < first + count; ++y, row += format_.stride(width_)) {
            for (long x = 0; x < width_; ++x) {
                add(picture_.at(x, y), pel(row, x));
            }
        }
    }

    Picture finish(long rows) override {
        for (std::size_t i = picture_.at(0, rows); i < picture_.at(0, height_); ++i) {
            put(picture_, i, {0, 0, 0, most_});
        }
        return std::move(picture_);
    }

private:
    static std::vector<Pel> tableOf(const RawFormat& format, const std::vector<std::uint32_t>& palette) {
        const std::size_t size = format.samples == 1 ? std::size_t{1} << format.bits : 0;
        std::vector<Pel> table(size, {0, 0, 0, 255});
        for (std::size_t i = 0; i < size; ++i) {
            if (format.colors == Colors::grey) {
                const auto grey = static_cast<uint16_t>(i * 255 / (size - 1));
                table[i] = {grey, grey, grey, 255};
            } else if (i < palette.size()) {
                const auto channel = [&](int shift) {
                    return static_cast<uint16_t>(palette[i] >> shift & 0xFF);
                };
                table[i] = {channel(16), channel(8), channel(0), channel(24)};
            }
        }
        return table;
    }

    [[nodiscard]] Pel pel(const uint8_t* row, long x) const {
        if (!table_.empty()) {
            const std::size_t bit = static_cast<std::size_t>(x) * format_.bits;
            return table_[row[bit / 8] >> (8 - format_.bits - bit % 8) & (table_.size() - 1)];
        }
        Pel s{};
        for (int i = 0; i < format_.samples; ++i) {
            const std::size_t at = static_cast<std::size_t>(x) * format_.samples + i;
            if (format_.bits == 8) {
                s[i] = row[at];
            } else {
                std::memcpy(&s[i], row + 2 * at, 2);
            }
        }
        if (format_.colors == Colors::cmyk) {
            const auto light = [&](uint16_t ink) {
                const std::uint64_t product = std::uint64_t{1} * (most_ - ink) * (most_ - s[3]);
                return static_cast<uint16_t>((product + most_ / 2) / most_);
            };
            return {light(s[0]), light(s[1]), light(s[2]), most_};
        }
        if (format_.colors == Colors::bgr) {
            std::swap(s[0], s[2]);
        }
        if (format_.alpha == Alpha::none) {
            s[3] = most_;
        }
        return s;
    }

    [[nodiscard]] Picture blank(bool isColor, bool hasAlpha) const {
        const bool isDeep = most_ > 255;
        const bool isGrey = !isColor && !hasAlpha;
        Picture picture = detail::sized(!isGrey  ? PictureKind::color
                                        : isDeep ? PictureKind::grey16
                                                 : PictureKind::grey8,
                                        width_, height_,
                                        isGrey   ? depth_
                                        : isDeep ? 16
                                                 : 8);
        const std::size_t size = picture.at(0, height_);
        if (isGrey && isDeep) {
            picture.words = Block<uint16_t>(size);
            return picture;
        }
        for (int plane = 0; plane < (isGrey ? 1 : 3); ++plane) {
            picture.bytes[plane] = Block<uint8_t>(size);
        }
        picture.channels = hasAlpha ? 4 : isColor && isDeep ? 3 : 0;
        if (picture.channels > 0) {
            picture.deep = Block<uint16_t>(size * picture.channels);
        }
        return picture;
    }

    void add(std::size_t at, const Pel& pel) {
        const bool isColor = pel[0] != pel[1] || pel[1] != pel[2];
        const bool hasAlpha = pel[3] != most_;
        if ((isColor && !isColor_) || (hasAlpha && !hasAlpha_)) {
            isColor_ |= isColor;
            hasAlpha_ |= hasAlpha;
            Picture next = blank(isColor_, hasAlpha_);
            for (std::size_t i = 0; i < at; ++i) {
                put(next, i, taken(i));
            }
            picture_ = std::move(next);
        }
        put(picture_, at, pel);
    }

    // What was put there.
    [[nodiscard]] Pel taken(std::size_t at) const {
        if (picture_.kind == PictureKind::color && picture_.channels == 0) {
            return {picture_.bytes[0][at], picture_.bytes[1][at], picture_.bytes[2][at], most_};
        }
        if (picture_.kind == PictureKind::color) {
            const uint16_t* values = picture_.deep.data() + at * picture_.channels;
            return {values[0], values[1], values[2], picture_.channels == 4 ? values[3] : most_};
        }
        const uint16_t grey = picture_.words ? picture_.words[at] : picture_.bytes[0][at];
        return {grey, grey, grey, most_};
    }

    void put(Picture& picture, std::size_t at, const Pel& pel) const {
        if (picture.kind == PictureKind::grey16) {
            picture.words[at] = pel[0];
            return;
        }
        if (picture.kind == PictureKind::grey8) {
            picture.bytes[0][at] = static_cast<uint8_t>(pel[0]);
            return;
        }
        for (int channel = 0; channel < picture.channels; ++channel) {
            picture.deep[at * picture.channels + channel] = pel[channel];
        }
        for (int plane = 0; plane < 3; ++plane) {
            picture.bytes[plane][at] = pel[3] == most_
                                           ? static_cast<uint8_t>((pel[plane] * 255u + most_ / 2) / most_)
                                           : seenThrough(pel, plane, at);
        }
    }

    [[nodiscard]] uint8_t seenThrough(const Pel& pel, int plane, std::size_t at) const {
        const std::uint64_t most = most_;
        const auto width = static_cast<std::size_t>(width_);
        const std::uint64_t under =
            detail::square(static_cast<long>(at % width), static_cast<long>(at / width)) * (most / 255);
        const std::uint64_t over = pel[plane] * (format_.alpha == Alpha::premultiplied ? most : pel[3]);
        const std::uint64_t mixed = (over + under * (most - pel[3])) * 255 + most * most / 2;
        return static_cast<uint8_t>(std::min<std::uint64_t>(mixed / (most * most), 255));
    }

    RawFormat format_;
    long width_;
    long height_;
    int depth_;
    uint16_t most_;
    std::vector<Pel> table_; // of an index, or of a grey value of few bits; empty of several samples
    bool isColor_ = false;
    bool hasAlpha_ = false;
    Picture picture_;
    std::vector<uint8_t> buffer_;
};

} // namespace

std::unique_ptr<RawRows> detail::colorRows(const RawFormat& format, long width, long height, int depth,
                                           const std::vector<std::uint32_t>& palette) {
    return std::make_unique<ColorRows>(format, width, height, depth, palette);
}

} // namespace talview
