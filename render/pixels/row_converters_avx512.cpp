// Row converters for AVX-512 with byte permutes: 64 pixels at a time, tables of 256 entries in registers.
#include "render/pixels/avx512.h"

#include <array>
#include <type_traits>

namespace talx {
namespace {

// Calls step(x, count) for every 64 pixels of a row; count is below 64 for the last ones only.
#define TALX_EACH_64(x, count, width)                                                                        \
    for (std::ptrdiff_t x = 0, count = (width) < 64 ? (width) : 64; x < (width);                             \
         x += 64, count = (width)-x < 64 ? (width)-x : 64)

// The bytes of 24-bit pixels out of planes: byte t of the row is channel t % 3 of pixel t / 3. Blue and green
// are picked from one pair of registers, in which green's indices start at 64; red is picked over them.
struct PackOrder {
    alignas(64) std::uint8_t blueGreen[3][64];
    alignas(64) std::uint8_t red[3][64];
    std::uint64_t redPlaces[3];
};
constexpr PackOrder packOrder = [] {
    PackOrder order{};
    for (int t = 0; t < 192; ++t) {
        const int channel = t % 3;
        order.blueGreen[t / 64][t % 64] = static_cast<std::uint8_t>(t / 3 + (channel == 1 ? 64 : 0));
        order.red[t / 64][t % 64] = static_cast<std::uint8_t>(t / 3);
        if (channel == 2)
            order.redPlaces[t / 64] |= std::uint64_t{1} << t % 64;
    }
    return order;
}();

TALX_AVX512_INLINE __m512i pack24(__m512i blue, __m512i green, __m512i red, int part) {
    const __m512i blueGreen =
        _mm512_permutex2var_epi8(blue, _mm512_loadu_si512(packOrder.blueGreen[part]), green);
    return _mm512_mask_permutexvar_epi8(blueGreen, packOrder.redPlaces[part],
                                        _mm512_loadu_si512(packOrder.red[part]), red);
}
TALX_AVX512_INLINE void store24(std::uint8_t* out, __m512i blue, __m512i green, __m512i red,
                                std::ptrdiff_t pixels) {
    for (int i = 0; i < 3; ++i)
        storePart(out + 64 * i, pack24(blue, green, red, i), 3 * pixels - 64 * i);
}

// 64 bytes in the order in which unpacking them once within 16-byte lanes puts each into its place.
TALX_AVX512_INLINE __m512i spreadForHalves(__m512i bytes) {
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), bytes);
}
TALX_AVX512_INLINE void store16(std::uint8_t* out, const __m512i (&words)[2], std::ptrdiff_t pixels) {
    for (int i = 0; i < 2; ++i)
        storePart(out + 64 * i, words[i], 2 * pixels - 64 * i);
}

// In which order 64 indices are taken, for the planes that are looked up with them.
enum class Order { Pixels, ForHalves, ForWords };

template <Order order>
TALX_AVX512_INLINE __m512i inOrder(__m512i bytes) {
    if constexpr (order == Order::ForHalves)
        return spreadForHalves(bytes);
    else if constexpr (order == Order::ForWords)
        return spreadForWords(bytes);
    else
        return bytes;
}

// What tells the table's entries: bytes, or 8 bits of words.
struct Bytes {
    ConstPixelRows rows;
};
struct Levels {
    ConstPixelRows rows;
    std::uint32_t mask;
    int shift;
};
template <Order order>
TALX_AVX512_INLINE __m512i loadIndices(const Bytes& source, std::ptrdiff_t x, std::ptrdiff_t y,
                                       std::ptrdiff_t count) {
    return inOrder<order>(loadPart(source.rows.data + y * source.rows.stride + x, count));
}
alignas(64) constexpr auto lowBytes = [] { // of the words in two registers
    std::array<std::uint8_t, 64> indices{};
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = static_cast<std::uint8_t>(2 * i);
    return indices;
}();
template <Order order>
TALX_AVX512_INLINE __m512i loadIndices(const Levels& source, std::ptrdiff_t x, std::ptrdiff_t y,
                                       std::ptrdiff_t count) {
    const std::uint8_t* const in = source.rows.data + y * source.rows.stride + 2 * x;
    const __m512i kept = _mm512_set1_epi16(static_cast<short>(source.mask));
    const __m128i bits = _mm_cvtsi32_si128(source.shift);
    const __m512i low = _mm512_srl_epi16(_mm512_and_si512(loadPart(in, 2 * count), kept), bits);
    const __m512i high = _mm512_srl_epi16(_mm512_and_si512(loadPart(in + 64, 2 * count - 64), kept), bits);
    return _mm512_permutex2var_epi8(low, inOrder<order>(_mm512_loadu_si512(lowBytes.data())), high);
}

// Which of 64 pixels are shown. The others get a pixel of their own.
struct Everything {};
template <class Entry>
struct Masked {
    ConstPixelRows rows;
    Entry pixel;
};
template <class Entry>
TALX_AVX512_INLINE __mmask64 visible(const Masked<Entry>& mask, std::ptrdiff_t x, std::ptrdiff_t y,
                                     std::ptrdiff_t count) {
    const __m512i bytes = loadPart(mask.rows.data + y * mask.rows.stride + x, count);
    return _mm512_test_epi8_mask(bytes, bytes);
}

TALX_AVX512 void grey8To8(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
                          const std::uint8_t* table) {
    BytePlane plane;
    for (int i = 0; i < 4; ++i)
        plane.part[i] = _mm512_loadu_si512(table + 64 * i);
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        TALX_EACH_64(x, count, extent.width) {
            const __m512i indices = loadIndices<Order::Pixels>(Bytes{source}, x, y, count);
            storePart(out + x, lookUp(plane, indices, _mm512_movepi8_mask(indices)), count);
        }
    }
}

template <class Source, class Shown>
TALX_AVX512 void writeRows(const PixelRows& destination, Extent extent, const std::uint16_t* table,
                           const Source& source, const Shown& shown) {
    BytePlane low, high;
    for (int i = 0; i < 4; ++i) {
        const __m512i first = _mm512_loadu_si512(table + 64 * i);
        const __m512i second = _mm512_loadu_si512(table + 64 * i + 32);
        low.part[i] = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(first)),
                                         _mm512_cvtepi16_epi8(second), 1);
        high.part[i] =
            _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(_mm512_srli_epi16(first, 8))),
                               _mm512_cvtepi16_epi8(_mm512_srli_epi16(second, 8)), 1);
    }
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        TALX_EACH_64(x, count, extent.width) {
            const __m512i indices = loadIndices<Order::ForHalves>(source, x, y, count);
            const __mmask64 upper = _mm512_movepi8_mask(indices);
            const __m512i lows = lookUp(low, indices, upper), highs = lookUp(high, indices, upper);
            __m512i words[2] = {_mm512_unpacklo_epi8(lows, highs), _mm512_unpackhi_epi8(lows, highs)};
            if constexpr (!std::is_same_v<Shown, Everything>) {
                const __mmask64 seen = visible(shown, x, y, count);
                const __m512i hidden = _mm512_set1_epi16(static_cast<short>(shown.pixel));
                words[0] = _mm512_mask_mov_epi16(hidden, static_cast<__mmask32>(seen), words[0]);
                words[1] = _mm512_mask_mov_epi16(hidden, static_cast<__mmask32>(seen >> 32), words[1]);
            }
            store16(out + 2 * x, words, count);
        }
    }
}

template <class Source, class Shown>
TALX_AVX512 void writeRows(const PixelRows& destination, Extent extent, const ColorEntry* table,
                           const Source& source, const Shown& shown) {
    std::uint32_t words[256];
    for (int i = 0; i < 256; ++i)
        words[i] = toRgb32(table[i]);
    const BytePlane planes[3] = {planeOf<0>(words), planeOf<1>(words), planeOf<2>(words)};
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        TALX_EACH_64(x, count, extent.width) {
            const __m512i indices = loadIndices<Order::Pixels>(source, x, y, count);
            const __mmask64 upper = _mm512_movepi8_mask(indices);
            __m512i colors[3]; // blue, green, red
            for (int i = 0; i < 3; ++i)
                colors[i] = lookUp(planes[i], indices, upper);
            if constexpr (!std::is_same_v<Shown, Everything>) {
                const __mmask64 seen = visible(shown, x, y, count);
                const std::uint8_t hidden[] = {shown.pixel.blue, shown.pixel.green, shown.pixel.red};
                for (int i = 0; i < 3; ++i)
                    colors[i] =
                        _mm512_mask_mov_epi8(_mm512_set1_epi8(static_cast<char>(hidden[i])), seen, colors[i]);
            }
            store24(out + 3 * x, colors[0], colors[1], colors[2], count);
        }
    }
}

template <class Source, class Shown>
TALX_AVX512 void writeRows(const PixelRows& destination, Extent extent, const std::uint32_t* table,
                           const Source& source, const Shown& shown) {
    const BytePlane planes[4] = {planeOf<0>(table), planeOf<1>(table), planeOf<2>(table), planeOf<3>(table)};
    for (std::ptrdiff_t y = 0; y < extent.height; ++y) {
        std::uint8_t* const out = destination.data + y * destination.stride;
        TALX_EACH_64(x, count, extent.width) {
            const __m512i indices = loadIndices<Order::ForWords>(source, x, y, count);
            const __mmask64 upper = _mm512_movepi8_mask(indices);
            __m512i words[4];
            interleave(lookUp(planes[0], indices, upper), lookUp(planes[1], indices, upper),
                       lookUp(planes[2], indices, upper), lookUp(planes[3], indices, upper), words);
            if constexpr (!std::is_same_v<Shown, Everything>) {
                const __mmask64 seen = visible(shown, x, y, count);
                const __m512i hidden = _mm512_set1_epi32(static_cast<int>(shown.pixel));
                for (int i = 0; i < 4; ++i)
                    words[i] =
                        _mm512_mask_mov_epi32(hidden, static_cast<__mmask16>(seen >> 16 * i), words[i]);
            }
            for (int i = 0; i < 4; ++i)
                storePart(out + 4 * x + 64 * i, words[i], 4 * count - 64 * i);
        }
    }
}

template <class Entry>
void grey8Rows(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
               const Entry* table) {
    writeRows(destination, extent, table, Bytes{source}, Everything());
}

template <class Entry>
void levelRows(const PixelRows& destination, const ConstPixelRows& source, Extent extent,
               const LevelTable<Entry>& table, const HiddenPixels<Entry>* hidden) {
    const Levels levels{source, table.mask, table.shift};
    if (hidden)
        writeRows(destination, extent, table.entries, levels, Masked<Entry>{hidden->mask, hidden->pixel});
    else
        writeRows(destination, extent, table.entries, levels, Everything());
}

// 64 bytes of pixels, those among them that are hidden replaced.
TALX_AVX512_INLINE void hidePart(std::uint8_t* out, __mmask64 hiddenBytes, __m512i pixel,
                                 std::ptrdiff_t count) {
    storePart(out, _mm512_mask_mov_epi8(loadPart(out, count), hiddenBytes, pixel), count);
}

TALX_AVX512 void hide16(std::uint8_t* out, const std::uint8_t* visible, std::ptrdiff_t width,
                        std::uint16_t pixel) {
    const __m512i pixels = _mm512_set1_epi16(static_cast<short>(pixel));
    TALX_EACH_64(x, count, width) {
        const __m512i seen = spreadForHalves(loadPart(visible + x, count));
        const __m512i low = _mm512_unpacklo_epi8(seen, seen), high = _mm512_unpackhi_epi8(seen, seen);
        hidePart(out + 2 * x, _mm512_testn_epi8_mask(low, low), pixels, 2 * count);
        hidePart(out + 2 * x + 64, _mm512_testn_epi8_mask(high, high), pixels, 2 * count - 64);
    }
}

TALX_AVX512 void hide24(std::uint8_t* out, const std::uint8_t* visible, std::ptrdiff_t width,
                        ColorEntry pixel) {
    const __m512i blue = _mm512_set1_epi8(static_cast<char>(pixel.blue)),
                  green = _mm512_set1_epi8(static_cast<char>(pixel.green)),
                  red = _mm512_set1_epi8(static_cast<char>(pixel.red));
    TALX_EACH_64(x, count, width) {
        const __m512i seen = loadPart(visible + x, count);
        for (int i = 0; i < 3; ++i) {
            const __m512i bytes = _mm512_permutexvar_epi8(_mm512_loadu_si512(packOrder.red[i]), seen);
            hidePart(out + 3 * x + 64 * i, _mm512_testn_epi8_mask(bytes, bytes), pack24(blue, green, red, i),
                     3 * count - 64 * i);
        }
    }
}

TALX_AVX512 void hide32(std::uint8_t* out, const std::uint8_t* visible, std::ptrdiff_t width,
                        std::uint32_t pixel) {
    const __m512i pixels = _mm512_set1_epi32(static_cast<int>(pixel));
    TALX_EACH_64(x, count, width) {
        const __m512i seen = spreadForWords(loadPart(visible + x, count));
        __m512i words[4];
        interleave(seen, seen, seen, seen, words);
        for (int i = 0; i < 4; ++i)
            hidePart(out + 4 * x + 64 * i, _mm512_testn_epi8_mask(words[i], words[i]), pixels,
                     4 * count - 64 * i);
    }
}

} // namespace

void takeAvx512RowConverters(Versions& versions) {
    versions.grey8To8 = grey8To8;
    versions.grey8To16 = grey8Rows<std::uint16_t>;
    versions.grey8To24 = grey8Rows<ColorEntry>;
    versions.grey8To32 = grey8Rows<std::uint32_t>;
    versions.levelsTo16 = levelRows<std::uint16_t>;
    versions.levelsTo24 = levelRows<ColorEntry>;
    versions.levelsTo32 = levelRows<std::uint32_t>;
    versions.hide16 = hide16;
    versions.hide24 = hide24;
    versions.hide32 = hide32;
}

} // namespace talx
