// PNG, JPEG and BMP files, and the choice among the kinds.
#include "viewer/files/file_facts.h"

#include "viewer/files/byte_reader.h"
#include "viewer/files/tiff_facts.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <initializer_list>

namespace talview {
namespace {

// Chunks up to the one that says that it is the last. A chunk without a name of four letters ends them, too:
// the file is damaged then.
bool pngEndsEarly(ByteReader file) {
    std::uint64_t at = 8;
    while (const auto length = file.number(at, 4)) {
        for (int i = 4; i < 8; ++i) {
            const auto letter = file.number(at + i, 1);
            if (letter && !std::isalpha(static_cast<int>(*letter))) {
                return false;
            }
        }
        const auto name = file.number(at + 4, 4);
        at += 12 + *length;
        if (!name || at > file.size()) {
            return true;
        }
        if (*name == 0x49454E44) {
            return false;
        }
    }
    return true;
}

// Segments up to the marker of the end. Between them lies the data of scans, in which 0xFF is followed by 0
// or by the number of a restart.
bool jpegEndsEarly(ByteReader file) {
    std::uint64_t at = 2;
    while (const auto byte = file.number(at++, 1)) {
        if (*byte != 0xFF) {
            continue;
        }
        auto code = file.number(at++, 1);
        while (code && *code == 0xFF) {
            code = file.number(at++, 1);
        }
        if (code && *code == 0xD9) {
            return false;
        }
        if (code && *code > 1 && (*code < 0xD0 || *code > 0xD8)) {
            at += std::max<std::uint64_t>(file.number(at, 2).value_or(0), 2);
        }
    }
    return true;
}

FileFacts bmpFacts(ByteReader file) {
    FileFacts facts{.kind = FileKind::bmp};
    const auto pixels = file.number(10, 4);
    const auto header = file.number(14, 4);
    const bool isOld = header && *header == 12;
    const auto width = isOld ? file.number(18, 2) : file.number(18, 4);
    const auto height = isOld ? file.number(20, 2) : file.number(22, 4);
    const auto bits = isOld ? file.number(24, 2) : file.number(28, 2);
    const auto packing = isOld ? 0 : file.number(30, 4);
    if (!pixels || !header || !width || !height || !bits || !packing) {
        facts.endsEarly = true;
        return facts;
    }
    const bool isPlain = *packing == 0 || *packing == 3;
    if (!isPlain) {
        const auto size = file.number(34, 4);
        facts.endsEarly = !size || *pixels + *size > file.size();
        return facts;
    }
    const auto signedHeight = isOld ? static_cast<std::int64_t>(*height) : static_cast<std::int32_t>(*height);
    const auto rows = static_cast<std::uint64_t>(std::abs(signedHeight));
    const std::uint64_t stride = (*width * *bits + 31) / 32 * 4;
    const std::uint64_t there = file.size() > *pixels ? file.size() - *pixels : 0;
    const std::uint64_t whole = stride == 0 ? rows : std::min(rows, there / stride);
    facts.endsEarly = whole < rows;
    if (facts.endsEarly) {
        facts.missing = signedHeight > 0 ? RowRange{0, static_cast<long>(rows - whole - 1)}
                                         : RowRange{static_cast<long>(whole), static_cast<long>(rows - 1)};
    }
    return facts;
}

} // namespace

void FileFacts::gaveRows(long count, long height) {
    if (count < height) {
        missing = {std::min(count, missing.value_or(RowRange{count, 0}).first), height - 1};
    }
}

std::wstring FileFacts::note() const {
    const std::wstring rows = missing ? L": rows " + std::to_wstring(missing->first) + L" to " +
                                            std::to_wstring(missing->last) + L" lack pixels"
                                      : L": pixels may be missing";
    return endsEarly ? L"the file ends early" + rows : missing ? L"the file is damaged" + rows : L"";
}

FileFacts examine(const ByteSource& source, unsigned frame) {
    std::array<std::uint8_t, 8> start{};
    const std::size_t count = source.read(0, start.data(), start.size());
    const auto isStart = [&](std::initializer_list<int> bytes) {
        return count >= bytes.size() && std::equal(bytes.begin(), bytes.end(), start.begin());
    };
    if (isStart({0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'})) {
        return {.kind = FileKind::png, .endsEarly = pngEndsEarly(ByteReader(source))};
    }
    if (isStart({0xFF, 0xD8})) {
        return {.kind = FileKind::jpeg, .endsEarly = jpegEndsEarly(ByteReader(source))};
    }
    if (isStart({'B', 'M'})) {
        return bmpFacts(ByteReader(source, true));
    }
    if (isStart({'I', 'I', 42, 0}) || isStart({'M', 'M', 0, 42})) {
        return tiffFacts(ByteReader(source, start[0] == 'I'), frame);
    }
    return {};
}

} // namespace talview
