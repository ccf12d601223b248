// Values and texts of pictures.
#include "viewer/view/failure.h"
#include "viewer/view/picture.h"

#include <gtest/gtest.h>

namespace talview {
namespace {

Picture range(std::initializer_list<std::uint16_t> words, std::initializer_list<std::uint8_t> mask) {
    Picture picture;
    picture.kind = PictureKind::range16;
    picture.width = static_cast<long>(words.size());
    picture.height = 1;
    picture.depth = 16;
    picture.words = Block<std::uint16_t>(words.size());
    std::copy(words.begin(), words.end(), picture.words.data());
    picture.mask = Block<std::uint8_t>(mask.size());
    std::copy(mask.begin(), mask.end(), picture.mask.data());
    return picture;
}

TEST(Picture, LimitsAreThoseOfVisibleValues) {
    EXPECT_EQ(dataLimits(range({3, 900, 500, 65535}, {0, 1, 255, 0})), (Limits{500, 900}));
    EXPECT_EQ(dataLimits(range({7, 9}, {1, 0})), (Limits{7, 8}));
    EXPECT_EQ(dataLimits(range({65535}, {})), (Limits{65534, 65535}));
    EXPECT_EQ(dataLimits(range({7, 9}, {0, 0})), (Limits{0, 65535}));
    Picture shallow = range({1023, 0x8405}, {});
    shallow.kind = PictureKind::grey16;
    shallow.depth = 10; // of the second value, 5 counts
    EXPECT_EQ(dataLimits(shallow), (Limits{5, 1023}));
}

TEST(Picture, ValuesAreToldInTheirUnit) {
    Picture heights = range({1000, 20}, {1, 0});
    EXPECT_EQ(valueText(heights, 0, 0), L"1000");
    heights.scale = {0.01, -3, L"mm"};
    EXPECT_EQ(valueText(heights, 0, 0), L"7 mm");
    EXPECT_EQ(valueText(heights, 1, 0), L"-2.8 mm (hidden)");
}

TEST(Texts, GoToUtf8AndBack) {
    for (const char* text : {"", "a\x7F", "\xC3\xA9\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(utf8(wide(text)), text);
    }
    const std::string bad = utf8(wide("\x80\xC1\xBF\xED\xA0\x80\xF4\x90\x80\x80\xE2\x82"));
    EXPECT_EQ(bad.find_first_not_of("\xEF\xBF\xBD"), std::string::npos) << bad;
    const wchar_t half[] = {0xD800, L'x', 0};
    EXPECT_EQ(utf8(half), "\xEF\xBF\xBDx");
}

} // namespace
} // namespace talview
