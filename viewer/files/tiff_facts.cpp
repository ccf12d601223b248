// Where the strips and tiles of a picture lie.
#include "viewer/files/tiff_facts.h"

#include <algorithm>

namespace talview {
namespace {

using Number = std::optional<std::uint64_t>;

// The numbers under one tag of a directory.
struct Field {
    std::uint64_t count = 0;
    std::uint64_t at = 0; // in the file
    int bytes = 0;        // of a number: 1, 2 or 4

    [[nodiscard]] Number value(ByteReader& file, std::uint64_t index) const {
        return index < count ? file.number(at + index * bytes, bytes) : std::nullopt;
    }
};

class Directory {
public:
    Directory(ByteReader& file, std::uint64_t first, std::uint64_t entries)
        : file_(file), first_(first), entries_(entries) {}

    // Without numbers if the tag is not there.
    [[nodiscard]] Field field(unsigned tag) const {
        for (std::uint64_t entry = first_; entry < first_ + entries_ * 12; entry += 12) {
            if (file_.number(entry, 2) != tag) {
                continue;
            }
            const std::uint64_t type = file_.number(entry + 2, 2).value_or(0);
            Field field;
            field.bytes = type == 1 ? 1 : type == 3 ? 2 : 4;
            field.count = file_.number(entry + 4, 4).value_or(0);
            field.at = field.count * field.bytes <= 4 ? entry + 8 : file_.number(entry + 8, 4).value_or(0);
            return field;
        }
        return {};
    }

    [[nodiscard]] std::uint64_t number(unsigned tag, std::uint64_t otherwise) const {
        return field(tag).value(file_, 0).value_or(otherwise);
    }

private:
    ByteReader& file_;
    std::uint64_t first_;
    std::uint64_t entries_;
};

} // namespace

FileFacts tiffFacts(ByteReader file, unsigned frame) {
    enum Tag : unsigned {
        imageWidth = 256,
        imageLength = 257,
        bitsPerSample = 258,
        stripOffsets = 273,
        samplesPerPixel = 277,
        rowsPerStrip = 278,
        stripByteCounts = 279,
        tileWidth = 322,
        tileLength = 323,
        tileOffsets = 324,
        tileByteCounts = 325,
        sampleFormat = 339
    };
    FileFacts facts{.kind = FileKind::tiff};
    Number at = file.number(4, 4);
    Number entries = at ? file.number(*at, 2) : at;
    for (unsigned i = 0; i < std::min(frame, 65535u) && entries && *at != 0; ++i) {
        at = file.number(*at + 2 + *entries * 12, 4);
        entries = at ? file.number(*at, 2) : at;
    }
    facts.endsEarly = !entries || *at + 2 + *entries * 12 > file.size();
    if (facts.endsEarly || *at == 0) {
        return facts;
    }
    Directory directory(file, *at + 2, *entries);
    const auto numbers = directory.number(sampleFormat, 1);
    facts.numbers =
        numbers >= 1 && numbers <= 3 ? static_cast<FileFacts::Numbers>(numbers) : FileFacts::Numbers::other;
    facts.bits = static_cast<int>(std::min<std::uint64_t>(directory.number(bitsPerSample, 1), 64));
    facts.samples = static_cast<int>(std::min<std::uint64_t>(directory.number(samplesPerPixel, 1), 65535));

    // Pieces lie one beside the other in a row of them, and a plane of rows behind the other.
    const bool isTiled = directory.field(tileOffsets).count > 0;
    const Field offsets = directory.field(isTiled ? tileOffsets : stripOffsets);
    const Field counts = directory.field(isTiled ? tileByteCounts : stripByteCounts);
    const std::uint64_t most = 0x7FFFFFFF;
    const std::uint64_t width = std::min(directory.number(imageWidth, 0), most);
    const std::uint64_t height = std::min(directory.number(imageLength, 0), most);
    const std::uint64_t rows = std::clamp<std::uint64_t>(
        directory.number(isTiled ? tileLength : rowsPerStrip, most), 1, std::max<std::uint64_t>(height, 1));
    const std::uint64_t pieceWidth =
        isTiled ? std::max<std::uint64_t>(directory.number(tileWidth, 1), 1) : most;
    const std::uint64_t across = std::max<std::uint64_t>((width + pieceWidth - 1) / pieceWidth, 1);
    const std::uint64_t down = (height + rows - 1) / rows;
    facts.tileRows = isTiled ? static_cast<long>(rows) : 0;

    ByteReader second = file; // the two lists are read side by side
    const auto pieces = std::min<std::uint64_t>(offsets.count, 1 << 18);
    for (std::uint64_t i = 0; i < pieces && down > 0; ++i) {
        const Number offset = offsets.value(file, i);
        const Number count = i < counts.count ? counts.value(second, i) : 0;
        if (offset && count && *offset + *count <= file.size()) {
            continue;
        }
        facts.endsEarly = true;
        const long first = static_cast<long>(i / across % down * rows);
        facts.missing = {std::min(first, facts.missing.value_or(RowRange{first, 0}).first),
                         static_cast<long>(height - 1)};
        if (!offset) {
            break;
        }
    }
    return facts;
}

} // namespace talview
