// Decoding with WIC, strip by strip.
#include "viewer/files/frame.h"

#include "viewer/files/wic_formats.h"
#include "viewer/view/failure.h"

#include <algorithm>
#include <new>

namespace talview {
namespace {

using talxrend::ComPtr;
using Numbers = FileFacts::Numbers;

constexpr long stripBytes = 1 << 20;
constexpr long mostStripBytes = 16 << 20;

std::string numbersText(const FileFacts& facts) {
    const char* const kind = facts.numbers == Numbers::real          ? "floating-point"
                             : facts.numbers == Numbers::whole       ? "whole"
                             : facts.numbers == Numbers::signedWhole ? "signed whole"
                                                                     : "complex or unknown";
    return std::to_string(facts.samples) + " x " + std::to_string(facts.bits) + "-bit " + kind + " numbers";
}

} // namespace

Frame::Frame(const std::wstring& path, unsigned frame, Progress& progress, Part part)
    : path_(path), progress_(progress), part_(part),
      stream_(new FileStream(path,
                             [this](double share) {
                                 reached(share);
                                 return !progress_.isCancelled();
                             })),
      factory_(
          talxrend::create<IWICImagingFactory>(CLSID_WICImagingFactory, notRegistered("windowscodecs.dll"))) {
    require(
        factory_->CreateDecoderFromStream(stream_.Get(), nullptr, WICDecodeMetadataCacheOnDemand, &decoder_));
    require(decoder_->GetFrameCount(&frames_));
    frames_ = std::max(frames_, 1u);
    if (frame >= frames_) {
        throw Failure(utf8(path) + " has only " + std::to_string(frames_) +
                      (frames_ == 1 ? " picture" : " pictures"));
    }
    facts_ = examine(stream_->bytes(), frame);
    UINT width = 0;
    UINT height = 0;
    require(decoder_->GetFrame(frame, &frame_));
    require(frame_->GetPixelFormat(&format_));
    require(frame_->GetSize(&width, &height));
    require(width > 0 && height > 0 ? S_OK : E_FAIL);
    requireSize(std::uint64_t{width} * height);
    width_ = static_cast<long>(width);
    height_ = static_cast<long>(height);
}

Picture Frame::read(int depth, std::wstring& note) {
    ComPtr<IWICBitmapSource> source = frame_;
    auto format = rawFormat(format_);
    if (format) {
        correct(*format);
    } else {
        source = converted();
        format = RawFormat{Colors::bgr, 4, 8, Sample::whole, Alpha::straight};
    }
    requireSize(std::uint64_t{format->stride(width_)} * height_);
    const auto palette = format->colors == Colors::palette ? colors() : std::vector<std::uint32_t>();
    const auto rows = rawRows(*format, width_, height_, depth, palette);
    const long given = copy(source.Get(), *rows, static_cast<UINT>(format->stride(width_)));
    facts_.gaveRows(given, height_);
    note = facts_.note();
    return rows->finish(given);
}

void Frame::throwFailure(const std::string& why) const {
    throw Failure("cannot read " + utf8(path_) + ": " + why);
}

void Frame::throwUnsupported() const {
    throwFailure("the system's decoder does not support this kind of TIFF picture, " + numbersText(facts_));
}

void Frame::require(HRESULT result) {
    if (SUCCEEDED(result)) {
        return;
    }
    progress_.throwIfCancelled();
    if (result == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    if (facts_.kind == FileKind::unknown) {
        facts_ = examine(stream_->bytes(), 0);
    }
    if (stream_->bytes().size == 0) {
        throwFailure("the file is empty");
    }
    if (facts_.endsEarly) {
        throwFailure("the file ends early");
    }
    if (facts_.kind == FileKind::unknown) {
        throwFailure("it is not a PNG, BMP, TIFF or JPEG picture");
    }
    if (facts_.kind == FileKind::tiff && (facts_.numbers != Numbers::whole || facts_.bits > 16)) {
        throwUnsupported();
    }
    throwFailure("it is damaged, or of a kind that the system's decoder does not support");
}

void Frame::requireSize(std::uint64_t bytes) const {
    if (bytes > 0x7FFFFFFF) {
        throwFailure("it is too large");
    }
}

// Decoders may tell the numbers of a TIFF picture by their size alone.
void Frame::correct(RawFormat& format) const {
    if (facts_.kind != FileKind::tiff || facts_.bits != format.bits) {
        return;
    }
    const bool isGrey = format.colors == Colors::grey;
    const bool isLong = format.bits == 32;
    if (facts_.numbers == Numbers::real && format.bits == 16) {
        format.sample = Sample::real;
    } else if (facts_.numbers == Numbers::signedWhole && isGrey) {
        format.sample = Sample::signedWhole;
    } else if (facts_.numbers == Numbers::whole && isGrey && isLong) {
        format.sample = Sample::whole;
    } else if (facts_.numbers != Numbers::real && (facts_.numbers != Numbers::whole || isLong)) {
        throwUnsupported();
    }
}

ComPtr<IWICBitmapSource> Frame::converted() const {
    ComPtr<IWICFormatConverter> converter;
    if (FAILED(factory_->CreateFormatConverter(&converter)) ||
        FAILED(converter->Initialize(frame_.Get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                                     nullptr, 0, WICBitmapPaletteTypeCustom))) {
        throwFailure("its pixel format is not supported");
    }
    return converter;
}

std::vector<std::uint32_t> Frame::colors() {
    ComPtr<IWICPalette> palette;
    std::vector<std::uint32_t> colors(256);
    UINT count = 0;
    require(factory_->CreatePalette(&palette));
    require(frame_->CopyPalette(palette.Get()));
    require(palette->GetColors(static_cast<UINT>(colors.size()), colors.data(), &count));
    colors.resize(std::min(count, 256u));
    return colors;
}

// Answers how many rows the decoder gave. Where it fails in a strip, the rows are asked for one by one.
long Frame::copy(IWICBitmapSource* source, RawRows& rows, UINT stride) {
    const auto fitting = [&](long bytes) {
        return std::max(1L, static_cast<long>(bytes / stride));
    };
    // A row of tiles is decoded as a whole, each time that a part of it is asked for.
    const long together = std::clamp(facts_.tileRows, 1L, fitting(mostStripBytes));
    long strip = std::max(fitting(stripBytes) / together, 1L) * together;
    for (long y = 0; y < height_;) {
        progress_.throwIfCancelled();
        const long count = std::min(strip, height_ - y);
        const WICRect rect{0, static_cast<INT>(y), static_cast<INT>(width_), static_cast<INT>(count)};
        const HRESULT copied = source->CopyPixels(&rect, stride, stride * count, rows.place(y, count));
        if (SUCCEEDED(copied)) {
            rows.convert(y, count);
            y += count;
            rows_ = static_cast<double>(y) / height_;
            reached(bytes_);
        } else if (count > 1) {
            strip = 1;
        } else {
            progress_.throwIfCancelled();
            require(y == 0 ? copied : S_OK);
            return y;
        }
    }
    return height_;
}

// Decoders that read everything before they give a row give the rows quickly.
void Frame::reached(double bytes) {
    bytes_ = bytes;
    progress_.setShare(part_.from + (part_.to - part_.from) * (0.9 * bytes_ + 0.1 * rows_));
}

} // namespace talview
