// Numbers in a source of bytes.
#pragma once

#include "viewer/files/file_facts.h"

#include <algorithm>
#include <array>

namespace talview {

// Reads a little more than it was asked for, because neighbours are asked for next.
class ByteReader {
public:
    // isLittle: the lowest byte of a number comes first.
    explicit ByteReader(const ByteSource& source, bool isLittle = false)
        : source_(source), isLittle_(isLittle) {}

    [[nodiscard]] std::uint64_t size() const { return source_.size; }

    // Of so many bytes, at most 4; none where they do not all lie in the source.
    [[nodiscard]] std::optional<std::uint64_t> number(std::uint64_t from, int bytes) {
        if (from < at_ || from + bytes > at_ + count_) {
            at_ = from;
            count_ = source_.read(from, window_.data(), window_.size());
            if (count_ < static_cast<std::size_t>(bytes)) {
                return std::nullopt;
            }
        }
        const std::uint8_t* read = window_.data() + (from - at_);
        std::uint64_t value = 0;
        for (int i = 0; i < bytes; ++i) {
            value = value << 8 | read[isLittle_ ? bytes - 1 - i : i];
        }
        return value;
    }

private:
    const ByteSource& source_;
    bool isLittle_;
    std::uint64_t at_ = 0;
    std::size_t count_ = 0;
    std::array<std::uint8_t, 4096> window_{};
};

} // namespace talview
