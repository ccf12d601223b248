// What the structure of a picture file says: whether the file ends before its picture does, and what decoders
// leave out. The pixels are not decoded. Whatever stands in the file, looking at it ends, reads nothing
// beyond it and takes little memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace talview {

// Bytes that can be read at any place.
struct ByteSource {
    std::uint64_t size = 0;
    // Answers how many bytes were read, fewer than asked for where the source ends.
    std::function<std::size_t(std::uint64_t from, void* to, std::size_t count)> read;
};

enum class FileKind { unknown, png, jpeg, tiff, bmp };

struct RowRange {
    long first;
    long last;
    bool operator==(const RowRange&) const = default;
};

struct FileFacts {
    FileKind kind = FileKind::unknown;
    bool endsEarly = false;
    std::optional<RowRange> missing = std::nullopt; // rows that lack pixels, if they are known

    // Of a TIFF picture.
    enum class Numbers { whole = 1, signedWhole = 2, real = 3, other = 4 };
    Numbers numbers = Numbers::whole;
    int bits = 0;      // of a sample; 0: not known
    int samples = 0;   // of a pixel
    long tileRows = 0; // rows that are decoded together, if they are tiles

    // A decoder has given so many rows, from the top on, and failed then.
    void gaveRows(long count, long height);
    // What a person must know of the file, in one line; empty: nothing.
    [[nodiscard]] std::wstring note() const;
};

// frame: the one of a TIFF file that is asked about, counted from 0.
[[nodiscard]] FileFacts examine(const ByteSource& source, unsigned frame);

} // namespace talview
