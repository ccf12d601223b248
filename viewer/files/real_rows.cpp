// Floating-point, fixed-point and 32-bit numbers.
#include "viewer/files/raw_rows.h"

#include "viewer/view/light.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace talview {
namespace {

template <class Number>
Number readAs(const std::uint8_t* from) {
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
}

float ofHalf(std::uint16_t bits) {
    const int exponent = bits >> 10 & 31;
    const int fraction = bits & 1023;
    float number = std::ldexp(static_cast<float>(exponent == 0 ? fraction : fraction + 1024),
                              (exponent == 0 ? 1 : exponent) - 25);
    if (exponent == 31) {
        number =
            fraction == 0 ? std::numeric_limits<float>::infinity() : std::numeric_limits<float>::quiet_NaN();
    }
    return bits & 0x8000 ? -number : number;
}

float number(const RawFormat& format, const std::uint8_t* from) {
    const bool isShort = format.bits == 16;
    switch (format.sample) {
    case Sample::real:
        return isShort ? ofHalf(readAs<std::uint16_t>(from)) : readAs<float>(from);
    case Sample::fixedPoint:
        return isShort ? std::ldexp(static_cast<float>(readAs<std::int16_t>(from)), -13)
                       : std::ldexp(static_cast<float>(readAs<std::int32_t>(from)), -24);
    case Sample::signedWhole:
        return static_cast<float>(readAs<std::int32_t>(from));
    case Sample::whole:
        break;
    }
    return static_cast<float>(readAs<std::uint32_t>(from));
}

// What the screen is told for light between 0 and 1.
std::uint8_t ofLight(float light) {
    // Without a destructor: threads may convert still when the program ends.
    static const std::array<std::uint8_t, 65536> table = [] {
        std::array<std::uint8_t, 65536> levels{};
        for (std::size_t i = 0; i < levels.size(); ++i) {
            levels[i] = levelOf(static_cast<double>(i) / 65535);
        }
        return levels;
    }();
    return light > 0 ? table[static_cast<std::size_t>(std::min(light, 1.0f) * 65535 + 0.5f)] : table[0];
}

class RealRows final : public RawRows {
public:
    RealRows(const RawFormat& format, long width, long height)
        : format_(format),
          picture_(detail::sized(format.colors == Colors::grey ? PictureKind::grey16 : PictureKind::color,
                                 width, height, 16)),
          values_(picture_.at(0, height)) {
        picture_.channels = format.colors == Colors::grey ? 1 : format.alpha == Alpha::none ? 3 : 4;
        picture_.real = Block<float>(values_ * picture_.channels);
        picture_.sample = format.sample;
    }

    std::uint8_t* place(long /*first*/, long count) override {
        buffer_.resize(format_.stride(picture_.width) * count);
        return buffer_.data();
    }

    void convert(long first, long count) override {
        const int bytes = format_.bits / 8;
        const int channels = picture_.channels;
        const std::uint8_t* from = buffer_.data();
        for (std::size_t i = picture_.at(0, first); i < picture_.at(0, first + count); ++i) {
            float* values = picture_.real.data() + i * channels;
            for (int channel = 0; channel < channels; ++channel) {
                values[channel] = number(format_, from + channel * bytes);
            }
            if (format_.colors == Colors::bgr) {
                std::swap(values[0], values[2]);
            }
            from += format_.samples * bytes;
        }
    }

    Picture finish(long rows) override {
        std::fill(picture_.real.data() + picture_.at(0, rows) * picture_.channels,
                  picture_.real.data() + picture_.real.size(), std::numeric_limits<float>::quiet_NaN());
        if (picture_.kind == PictureKind::grey16) {
            spread();
        } else {
            dropOpaqueAlpha(picture_.at(0, rows));
            expose();
        }
        return std::move(picture_);
    }

private:
    void spread() {
        const Block<float>& real = picture_.real;
        double low = std::numeric_limits<double>::infinity();
        double high = -low;
        for (std::size_t i = 0; i < values_; ++i) {
            if (std::isfinite(real[i])) {
                low = std::min<double>(low, real[i]);
                high = std::max<double>(high, real[i]);
            }
        }
        picture_.scale.offset = low <= high ? low : 0;
        picture_.scale.factor = low < high ? (high - low) / 65535 : 1;
        picture_.words = Block<std::uint16_t>(values_);
        for (std::size_t i = 0; i < values_; ++i) {
            const double place = (real[i] - picture_.scale.offset) / picture_.scale.factor;
            picture_.words[i] =
                std::isnan(place) ? 0 : static_cast<std::uint16_t>(std::clamp(place, 0.0, 65535.0) + 0.5);
        }
    }

    void dropOpaqueAlpha(std::size_t given) {
        if (picture_.channels != 4) {
            return;
        }
        for (std::size_t i = 0; i < given; ++i) {
            if (picture_.real[4 * i + 3] != 1) {
                return;
            }
        }
        Block<float> opaque(3 * values_);
        for (std::size_t i = 0; i < opaque.size(); ++i) {
            opaque[i] = picture_.real[i / 3 * 4 + i % 3];
        }
        picture_.real = std::move(opaque);
        picture_.channels = 3;
    }

    void expose() {
        for (int plane = 0; plane < 3; ++plane) {
            picture_.bytes[plane] = Block<std::uint8_t>(values_);
            for (std::size_t i = 0; i < values_; ++i) {
                const float* values = picture_.real.data() + i * picture_.channels;
                picture_.bytes[plane][i] =
                    picture_.channels == 4 ? seenThrough(values, plane, i) : ofLight(values[plane]);
            }
        }
    }

    // Where alpha is no number, the pixel was not given or means nothing; it is black.
    [[nodiscard]] std::uint8_t seenThrough(const float* values, int plane, std::size_t at) const {
        if (std::isnan(values[3])) {
            return 0;
        }
        const float alpha = std::clamp(values[3], 0.0f, 1.0f);
        const bool divides = format_.alpha == Alpha::premultiplied && alpha > 0;
        const auto width = static_cast<std::size_t>(picture_.width);
        const std::uint8_t under =
            detail::square(static_cast<long>(at % width), static_cast<long>(at / width));
        const std::uint8_t over = ofLight(divides ? values[plane] / alpha : values[plane]);
        return static_cast<std::uint8_t>(std::lround(over * alpha + under * (1 - alpha)));
    }

    RawFormat format_;
    Picture picture_;
    std::size_t values_; // pixels
    std::vector<std::uint8_t> buffer_;
};

} // namespace

std::unique_ptr<RawRows> detail::realRows(const RawFormat& format, long width, long height) {
    return std::make_unique<RealRows>(format, width, height);
}

} // namespace talview
