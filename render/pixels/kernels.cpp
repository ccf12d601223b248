// The resampling kernels, written once for both pixel sizes.
//
// Every formula is computed in double precision in the order given here: its rounding is part of the result.
#include "render/pixels/kernels.h"

#include "render/pixels/pixel_rows.h"
#include "render/pixels/versions.h"

#include <vector>

namespace talx {
namespace {

constexpr double wholeTolerance = 1e-10;

// The whole number above 1 that scale is within the tolerance of, or 0. Doubles from 2^20 on are further
// apart than the tolerance sees, so that none of them counts as whole.
std::int32_t wholeScale(double scale) {
    if (!(scale > 1.0 && scale < 1048576.0))
        return 0;
    const double below = std::trunc(scale);
    for (const double k : {below, below + 1.0}) {
        if (k > scale - wholeTolerance && scale + wholeTolerance > k)
            return static_cast<std::int32_t>(k);
    }
    return 0;
}

std::int64_t clampIndex(std::int64_t index, std::int32_t size) {
    return std::clamp<std::int64_t>(index, 0, std::int64_t{size} - 1);
}

// The two ways to read the source pixels that the destination shows: each hands out one index for each
// destination pixel, from the first on.

// Whole scales: each source pixel becomes a block of k destination pixels, counted from the scaled image's
// corner, so that a part shows what the whole shows there.
class BlockWalk {
public:
    BlockWalk(std::int32_t first, std::int32_t k, std::int32_t sourceSize)
        : index_(floorDiv(first, k)), phase_(first - index_ * k), k_(k), sourceSize_(sourceSize) {}

    std::int64_t next() {
        const std::int64_t index = clampIndex(index_, sourceSize_);
        if (++phase_ == k_) {
            phase_ = 0;
            ++index_;
        }
        return index;
    }

private:
    static std::int64_t floorDiv(std::int64_t a, std::int64_t b) { return a / b - (a % b < 0 ? 1 : 0); }

    std::int64_t index_;
    std::int64_t phase_;
    std::int32_t k_;
    std::int32_t sourceSize_;
};

// All other scales: each position is computed by itself.
class PositionWalk {
public:
    PositionWalk(std::int32_t first, double scale, std::int32_t sourceSize)
        : position_(first), inverse_(1.0 / scale), sourceSize_(sourceSize) {}

    std::int64_t next() {
        return clampIndex(cutToInt64(static_cast<double>(position_++) * inverse_), sourceSize_);
    }

private:
    std::int64_t position_;
    double inverse_;
    std::int32_t sourceSize_;
};

// Picks the pixels of rows, each time the same ones, by a version that serves where there are rows enough.
template <class Pixel>
class RowSampler {
public:
    // None of the columns lies outside the source row.
    RowSampler(std::vector<std::int32_t> columns, std::int32_t sourceWidth, std::int64_t rows)
        : columns_(std::move(columns)) {
        constexpr std::int64_t fewRows = 8;
        if (rows < fewRows)
            return;
        for (const SamplePlanner planner : activeVersions().samplePlanners) {
            if (planner && planner(plan_, columns_, sourceWidth, sizeof(Pixel)))
                return;
        }
    }

    [[nodiscard]] bool planned() const { return plan_.loop != nullptr; }
    void operator()(std::uint8_t* out, const std::uint8_t* in) const {
        if (planned())
            return plan_.loop(out, in, plan_);
        const auto width = static_cast<std::ptrdiff_t>(columns_.size());
        writeRow<Pixel>(out, width, [in, column = columns_.data()](std::ptrdiff_t x) {
            return loadPixel<Pixel>(in + column[x] * static_cast<std::ptrdiff_t>(sizeof(Pixel)));
        });
    }

private:
    std::vector<std::int32_t> columns_;
    SamplePlan plan_;
};

template <class Pixel, class Walk>
void resampleRows(const PlaneView& source, const PixelRows& destination, const Rect& target, Walk columnWalk,
                  Walk rowWalk) {
    const std::int64_t width = target.width();
    std::vector<std::int32_t> columns(static_cast<std::size_t>(width));
    for (std::int32_t& column : columns)
        column = static_cast<std::int32_t>(columnWalk.next());
    const RowSampler<Pixel> sample(std::move(columns), source.extent.width, target.height());

    std::int64_t shownRow = -1;
    for (std::int64_t y = 0; y < target.height(); ++y) {
        std::uint8_t* out = destination.data + y * destination.stride;
        const std::int64_t row = rowWalk.next();
        if (row == shownRow) {
            std::memcpy(out, out - destination.stride, static_cast<std::size_t>(width) * sizeof(Pixel));
            continue;
        }
        shownRow = row;
        sample(out, source.data + row * source.stride);
    }
}

template <class Pixel>
void resampleNearest(const PlaneView& source, const PixelRows& destination, double scale,
                     const Rect& target) {
    const auto [width, height] = source.extent;
    if (source.extent.empty() || target.empty())
        return;
    if (const std::int32_t k = wholeScale(scale)) {
        resampleRows<Pixel>(source, destination, target, BlockWalk(target.left, k, width),
                            BlockWalk(target.top, k, height));
    } else {
        resampleRows<Pixel>(source, destination, target, PositionWalk(target.left, scale, width),
                            PositionWalk(target.top, scale, height));
    }
}

// Fixed point: 64-bit words with the whole part in the upper half and a fraction of 16 bits below it.
// Overflow wraps around; it can happen only for positions outside every computable range.
std::uint64_t toFixed(double v) {
    return static_cast<std::uint64_t>(cutToInt64(v * 65536)) << 16;
}

std::int64_t wholePart(std::uint64_t fixed) {
    return static_cast<std::int64_t>(fixed) >> 32;
}

// One axis of a centre-aligned call: first the destination pixels before the inner range, then the inner
// ones, which are sampled, then those after it. begin is the first inner pixel in scaled-image coordinates.
struct CentreAxis {
    std::int64_t before = 0;
    std::int64_t begin = 0;
    std::int64_t inner = 0;
    std::int64_t after = 0;

    // From begin to end (exclusive) of the target with the computable range from first to last (exclusive),
    // which is not empty. A target beside the range is moved to start on its nearest pixel: that pixel is
    // then sampled and everything else is margin.
    CentreAxis(std::int64_t from, std::int64_t to, std::int64_t first, std::int64_t last) {
        if (to <= first || from >= last) {
            begin = to <= first ? first : last - 1;
            inner = 1;
            after = to - from - 1;
            return;
        }
        begin = std::max(from, first);
        before = begin - from;
        const std::int64_t end = std::min(to, last);
        inner = end - begin;
        after = to - end;
    }
};

// The inner pixels of every row: the run of the source row that they show and the integer steps through it.
struct CentreRun {
    std::int64_t start = 0;     // first source pixel of the run
    std::int64_t length = 0;    // pixels of the run inside the source, at least 1
    std::int64_t stepped = 0;   // inner pixels that stay inside the run; the rest show its last pixel
    std::uint64_t position = 0; // of the first inner pixel, relative to the run
    std::uint64_t step = 0;

    CentreRun(const CentreAxis& axis, double inverse, double offset, std::int32_t sourceWidth) {
        const double mapped = static_cast<double>(axis.begin) * inverse - offset;
        start = clampIndex(cutToInt64(mapped), sourceWidth);
        const double mappedEnd = static_cast<double>(axis.begin + axis.inner) * inverse - offset;
        length = std::clamp<std::int64_t>(cutToInt64(mappedEnd) - start + 2, 1, sourceWidth - start);
        position = toFixed(mapped - static_cast<double>(start));
        step = toFixed(inverse);

        const std::uint64_t limit = static_cast<std::uint64_t>(length) << 32;
        if (position >= limit)
            stepped = 0;
        else if (step == 0)
            stepped = axis.inner;
        else
            stepped = static_cast<std::int64_t>(
                std::min((limit - 1 - position) / step + 1, static_cast<std::uint64_t>(axis.inner)));
    }
};

template <class Pixel>
void fillPixels(std::uint8_t* out, std::int64_t count, Pixel pixel) {
    writeRow<Pixel>(out, count, [=](std::ptrdiff_t) { return pixel; });
}

// A version that picks the inner pixels of a row out of its run, if one serves.
template <class Pixel>
RowSampler<Pixel> centreSampler(const CentreRun& run, std::int64_t inner, std::int64_t rows) {
    std::vector<std::int32_t> columns;
    if (activeVersions().samplePlanners[0]) {
        columns.resize(static_cast<std::size_t>(inner), static_cast<std::int32_t>(run.length - 1));
        for (std::int64_t x = 0; x < run.stepped; ++x)
            columns[static_cast<std::size_t>(x)] =
                static_cast<std::int32_t>(wholePart(run.position + static_cast<std::uint64_t>(x) * run.step));
    }
    return {std::move(columns), static_cast<std::int32_t>(run.length), rows};
}

template <class Pixel>
void resampleCentre(const PlaneView& source, const PixelRows& destination, double scale, const Rect& target) {
    if (source.extent.empty() || target.width() < 3 || target.height() < 3)
        return;
    const double inverse = 1.0 / scale;
    const double offset = wholeScale(scale) != 0 ? 0.5 - 0.5 * inverse : 0.5;
    const std::int64_t first = cutToInt64(std::ceil(offset * scale));
    const auto end = [=](std::int32_t size) {
        return cutToInt64(std::ceil((size - offset) * scale)) - 1;
    };
    const std::int64_t columnEnd = end(source.extent.width);
    const std::int64_t rowEnd = end(source.extent.height);
    if (first >= columnEnd || first >= rowEnd)
        return resampleNearest<Pixel>(source, destination, scale, target);

    const CentreAxis columns(target.left, target.right, first, columnEnd);
    const CentreAxis rows(target.top, target.bottom, first, rowEnd);
    const CentreRun run(columns, inverse, offset, source.extent.width);

    const auto sample = centreSampler<Pixel>(run, columns.inner, rows.inner);
    std::vector<std::uint8_t> buffer(sample.planned() ? 0
                                                      : static_cast<std::size_t>(run.length) * sizeof(Pixel));
    constexpr std::int64_t size = sizeof(Pixel);
    const std::int64_t rowBytes = target.width() * size;
    const auto outputRow = [&](std::int64_t y) {
        return destination.data + y * destination.stride;
    };

    std::uint64_t rowPosition = toFixed(static_cast<double>(rows.begin) * inverse - offset);
    std::int64_t shownRow = -1;
    for (std::int64_t y = rows.before; y < rows.before + rows.inner; ++y, rowPosition += run.step) {
        std::uint8_t* out = outputRow(y);
        const std::int64_t row = clampIndex(wholePart(rowPosition), source.extent.height);
        if (row == shownRow) {
            std::memcpy(out, out - destination.stride, static_cast<std::size_t>(rowBytes));
            continue;
        }
        shownRow = row;
        const std::uint8_t* in = source.data + row * source.stride + run.start * size;
        std::uint8_t* inner = out + columns.before * size;
        if (sample.planned()) {
            sample(inner, in);
        } else {
            std::memcpy(buffer.data(), in, buffer.size());
            const auto pixelAt = [in = buffer.data(), position = run.position,
                                  step = run.step](std::ptrdiff_t x) {
                return loadPixel<Pixel>(in +
                                        wholePart(position + static_cast<std::uint64_t>(x) * step) * size);
            };
            writeRow<Pixel>(inner, run.stepped, pixelAt);
            fillPixels(inner + run.stepped * size, columns.inner - run.stepped,
                       loadPixel<Pixel>(in + (run.length - 1) * size));
        }
        fillPixels(out, columns.before, loadPixel<Pixel>(inner));
        std::uint8_t* afterInner = inner + columns.inner * size;
        fillPixels(afterInner, columns.after, loadPixel<Pixel>(afterInner - size));
    }
    for (std::int64_t y = 0; y < rows.before; ++y)
        std::memcpy(outputRow(y), outputRow(rows.before), static_cast<std::size_t>(rowBytes));
    const std::int64_t afterRows = rows.before + rows.inner;
    for (std::int64_t y = afterRows; y < target.height(); ++y)
        std::memcpy(outputRow(y), outputRow(afterRows - 1), static_cast<std::size_t>(rowBytes));
}

} // namespace

void resampleNearest8(const PlaneView& source, const PixelRows& destination, double scale,
                      const Rect& target) {
    resampleNearest<std::uint8_t>(source, destination, scale, target);
}

void resampleNearest16(const PlaneView& source, const PixelRows& destination, double scale,
                       const Rect& target) {
    resampleNearest<std::uint16_t>(source, destination, scale, target);
}

void resampleCentre8(const PlaneView& source, const PixelRows& destination, double scale,
                     const Rect& target) {
    resampleCentre<std::uint8_t>(source, destination, scale, target);
}

void resampleCentre16(const PlaneView& source, const PixelRows& destination, double scale,
                      const Rect& target) {
    resampleCentre<std::uint16_t>(source, destination, scale, target);
}

} // namespace talx
