// One frame of a picture file, decoded by WIC.
#pragma once

#include "viewer/files/file_stream.h"
#include "viewer/files/progress.h"
#include "viewer/files/raw_rows.h"

#include <wincodec.h>

#include <string>
#include <vector>

namespace talview {

class Frame {
public:
    // What reading this file is of the progress, between 0 and 1.
    struct Part {
        double from;
        double to;
    };

    // Opens the file; frame is counted from 0. Throws as readPicture does, read too.
    Frame(const std::wstring& path, unsigned frame, Progress& progress, Part part);
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;

    [[nodiscard]] unsigned frames() const { return frames_; }
    // depth: significant bits of 16-bit grey. note: becomes what is to be said of missing pixels.
    [[nodiscard]] Picture read(int depth, std::wstring& note);

private:
    [[noreturn]] void throwFailure(const std::string& why) const;
    [[noreturn]] void throwUnsupported() const;
    // Throws what a failed call of the decoder means.
    void require(HRESULT result);
    void requireSize(std::uint64_t bytes) const;

    void correct(RawFormat& format) const;
    [[nodiscard]] talxrend::ComPtr<IWICBitmapSource> converted() const;
    [[nodiscard]] std::vector<std::uint32_t> colors();
    [[nodiscard]] long copy(IWICBitmapSource* source, RawRows& rows, UINT stride);
    void reached(double bytes);

    std::wstring path_;
    Progress& progress_;
    Part part_;
    double bytes_ = 0; // shares of what is to be read
    double rows_ = 0;
    talxrend::ComPtr<FileStream> stream_;
    talxrend::ComPtr<IWICImagingFactory> factory_;
    talxrend::ComPtr<IWICBitmapDecoder> decoder_;
    talxrend::ComPtr<IWICBitmapFrameDecode> frame_;
    FileFacts facts_;
    GUID format_{};
    UINT frames_ = 0;
    long width_ = 0;
    long height_ = 0;
};

} // namespace talview
