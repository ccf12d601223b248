// Surrogates, and bytes that follow bytes.
#include "viewer/view/text.h"

#include <algorithm>

namespace talview {
namespace {

constexpr char32_t noCharacter = 0xFFFD;

bool isSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xE000;
}

void appendWide(std::wstring& text, char32_t character) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (character > 0xFFFF) {
            text += static_cast<wchar_t>(0xD7C0 + (character >> 10));
            character = 0xDC00 | (character & 0x3FF);
        }
    }
    text += static_cast<wchar_t>(character);
}

} // namespace

std::string utf8(std::wstring_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto character = static_cast<char32_t>(text[i]);
        if (character >= 0xD800 && character < 0xDC00 && i + 1 < text.size() &&
            (text[i + 1] & ~0x3FF) == 0xDC00) {
            character = 0x10000 + ((character & 0x3FF) << 10) + (text[++i] & 0x3FF);
        }
        if (isSurrogate(character) || character > 0x10FFFF) {
            character = noCharacter;
        }
        const int more = character < 0x80 ? 0 : character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        constexpr unsigned first[] = {0, 0xC0, 0xE0, 0xF0};
        bytes += static_cast<char>(first[more] | character >> 6 * more);
        for (int left = more; left-- > 0;) {
            bytes += static_cast<char>(0x80 | (character >> 6 * left & 0x3F));
        }
    }
    return bytes;
}

std::wstring wide(std::string_view text) {
    std::wstring result;
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i++]);
        const int more = lead < 0x80                  ? 0
                         : lead < 0xC2 || lead > 0xF4 ? -1
                         : lead < 0xE0                ? 1
                         : lead < 0xF0                ? 2
                                                      : 3;
        char32_t character = more == 0 ? lead : lead & (0x3F >> std::max(more, 0));
        int taken = 0;
        while (taken < more && i < text.size() && (text[i] & 0xC0) == 0x80) {
            character = character << 6 | (text[i++] & 0x3F);
            ++taken;
        }
        constexpr char32_t least[] = {0, 0x80, 0x800, 0x10000};
        const bool isGood = more >= 0 && taken == more && character >= least[std::max(more, 0)] &&
                            !isSurrogate(character) && character <= 0x10FFFF;
        appendWide(result, isGood ? character : noCharacter);
    }
    return result;
}

} // namespace talview
