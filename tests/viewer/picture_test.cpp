// Values and texts of pictures.
#include "viewer/view/failure.h"
#include "viewer/view/pixel_values.h"
#include "viewer/view/profile.h"

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
    EXPECT_EQ(valueText(heights, 0, 0), L"7.00 mm");
    EXPECT_EQ(valueText(heights, 1, 0), L"-2.80 mm (hidden)");
    heights.scale = {0.001, 1000, L""};
    EXPECT_EQ(valueText(heights, 0, 0), L"1001.000");
    EXPECT_EQ(valueTexts(heights, 0, 0).at(0), L"1001.000");
    EXPECT_EQ(longestValueText(heights), 8);
    EXPECT_EQ(limitsText({-0.25, 1, L"V"}, {3, 8}), L"0.25 to -1.00 V");
    EXPECT_EQ(limitsText({1, 0, L""}, {0.5, 200.125}), L"0.5 to 200.1");
    EXPECT_EQ(numberText(2 / 3.0, {1 / 3.0, 0, L""}), L"0.667");
    EXPECT_EQ(limitsText({1e-12, 0, L"s"}, {0, 5}) + limitsText({1e20, 0, L""}, {0, 5}),
              L"0 to 5e-12 s0 to 5e+20");
}

// Others than those which the map is looked up with: the file's own, in their unit too.
TEST(Picture, RealValuesAreToldInTheirUnit) {
    Picture real = range({0, 65535}, {1, 0});
    real.real = Block<float>(2);
    real.real[0] = 0.1234567f;
    real.real[1] = 16777216;
    real.channels = 1;
    real.scale = {0.5, 7, L""};
    real.rescale({-2, 0, L"mm"});
    EXPECT_EQ(real.scale.of(2), -16);
    EXPECT_EQ(valueText(real, 0, 0) + valueText(real, 1, 0), L"-0.2469134 mm-33554432 mm (hidden)");
    EXPECT_EQ(valueTexts(real, 0, 0).at(0), L"-0.246913");
    EXPECT_EQ(profileAlong(real, {{0, 0}, {0, 0}}).curves.at(0).at(0), -2.0 * 0.1234567f);
    real.kind = PictureKind::grey16;
    EXPECT_EQ(kindText(real), L"32-bit grey");
}

TEST(Texts, GoToUtf8AndBack) {
    for (const char* text : {"", "a\x7F", "\xC3\xA9\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(utf8(wide(text)), text);
    }
    EXPECT_EQ(wide("\x80\xC1\xBF\xED\xA0\x80\xF4\x90\x80\x80.\xE2\x82"),
              L"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD.\uFFFD");
    const wchar_t half[] = {0xD800, L'x', 0};
    EXPECT_EQ(utf8(half), "\xEF\xBF\xBDx");
}

} // namespace
} // namespace talview
