// The command line, and other texts that the viewer reads.
#include "viewer/view/failure.h"
#include "viewer/view/help.h"
#include "viewer/view/limits.h"
#include "viewer/view/marker_text.h"
#include "viewer/view/option_table.h"
#include "viewer/view/state.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace talview {
namespace {

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

Options parse(const std::string& line) {
    std::vector<std::wstring> arguments;
    for (const std::string& word : split(line, ' ')) {
        arguments.push_back(wide(word));
    }
    return parseOptions(arguments);
}

template <class Parse>
std::string errorOf(Parse parse, const std::string& text) {
    try {
        static_cast<void>(parse(text));
        return "none";
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

TEST(Options, AreRead) {
    const Options o =
        parse("a.png --at -1e2,+3 --heights -0.5,10,mm,x --limits -3,4 --marker 1,2 --marker 3,4.5"
              " --mask m.png --mask-color 10aBff --save x.y/A.JPG --format rgb16 --size 40x30");
    EXPECT_EQ(std::vector({o.width + 0.0, o.at->x, o.at->y, o.heights->of(4), o.markers.at(1).y}),
              std::vector<double>({40, -100, 3, 8, 4.5}));
    EXPECT_EQ(o.heights->unit, L"mm,x");
    EXPECT_EQ(o.limits.values, (Limits{-3, 4}));
    EXPECT_EQ(o.maskColor, 0x10ABFFu);
    EXPECT_TRUE(parse("a.png -h --nonsense").help);
    for (const std::string& good :
         split("|a.png --mask b.png --mask-color 000000 --kind range|a.png --marker 1,1 --markers "
               "b.csv|--scale fit"
               "|a.png --save a.bmp --hold 2 --no-overlays --marker 1,1 --no-mask --mask-color 000000 "
               "--mask m.png",
               '|')) {
        EXPECT_EQ(errorOf(parse, good), "none") << good;
    }
}

TEST(Options, ErrorsSayWhatIsAllowed) {
    for (const std::string& bad : split(
             "--size 400|--size 0x5|--size 5x16385|--size 5.5x5|--size 4x4x4|--scale 0|--scale 1001|--scale "
             "nan|"
             "--scale 0x5|--at 1|--at 1,2,3|--at ,2|--method Nearest|--map blue|--limits 5,5|--limits 1,inf|"
             "--depth 9|--kind grey|--mask-color 12345|--mask-color 12345g|--heights 0,1|--heights "
             "1,2mm|--heights 1e31,0|--heights 1e-31,0|--heights 1,-1e31|"
             "--frame 0|--frame 1.5|--profile 1,2,3|--format rgb8|--save a.gif|--save png|--hold -1",
             '|')) {
        const auto words = split(bad, ' ');
        const std::string begin = "bad value '" + words[1] + "' for " + words[0] + ": ";
        const std::string error = errorOf(parse, "a.png " + bad);
        EXPECT_TRUE(error.starts_with(begin) && error.size() > begin.size()) << error;
    }
    EXPECT_EQ(errorOf(parse, "--engine x"), "bad value 'x' for --engine: gdi, directdraw");
    EXPECT_EQ(errorOf(parse, "a.png --save --hold 3").find("--save needs a value: "), 0u);
    EXPECT_EQ(errorOf(parse, "a.png b.png"), "more than one image: a.png and b.png");
    EXPECT_EQ(errorOf(parse, "a.png --no-grid --no-grid"), "--no-grid is given twice");
}

TEST(Options, ThatWouldDoNothingAreErrorsThatNameBoth) {
    for (const std::string& pair :
         split("--format rgb16/--engine directdraw|--depth 10/--mask m.png|--depth 10/--kind range|"
               "--kind auto/--mask m.png|--full-screen/--save x.png|--mask-color 000000/--no-mask|"
               "--marker 1,2/--no-overlays|--histogram/--no-overlays",
               '|')) {
        const auto both = split(pair, '/');
        const std::string more = both[1].starts_with("--save") ? " a.png" : " a.png --save y.png";
        for (const std::string& line : {both[0] + " " + both[1] + more, both[1] + " " + both[0] + more}) {
            const std::string error = errorOf(parse, line);
            EXPECT_NE(error.find(split(both[0], ' ')[0]), std::string::npos) << line << ": " << error;
            EXPECT_NE(error.find(split(both[1], ' ')[0]), std::string::npos) << line << ": " << error;
        }
    }
    EXPECT_EQ(errorOf(parse, "a.png --format rgb16 --hold 1").find("--format needs --save"), 0u);
    EXPECT_EQ(errorOf(parse, "--frame 2"), "--frame needs an image");
    EXPECT_EQ(errorOf(parse, "a.png --no-mask").find("--no-mask needs --mask"), 0u);
}

TEST(Options, LimitsBeginAsAskedFor) {
    Picture picture;
    picture.kind = PictureKind::grey16;
    picture.depth = 12;
    picture.words = Block<std::uint16_t>(2);
    picture.words[0] = 900;
    picture.words[1] = 100;
    picture.scale = {-0.5, 10, L"mm"};
    EXPECT_EQ(openingLimits(parse("a.png"), picture), (Limits{100, 900}));
    EXPECT_EQ(openingLimits(parse("a.png --limits full"), picture), (Limits{0, 4095}));
    EXPECT_EQ(openingLimits(parse("a.png --limits -90,5"), picture), (Limits{10, 200}));
    for (const double factor : {0.0, HUGE_VAL, std::nan(""), 1e-300, 1e300}) {
        picture.scale = {factor, 5, L""};
        const Limits limits = openingLimits(parse("a.png --limits 5,5.5"), picture);
        EXPECT_TRUE(limits.low < limits.high && std::isfinite(limits.high - limits.low)) << factor;
    }
}

TEST(Help, TellsAllOptions) {
    for (const Option& option : optionTable()) {
        EXPECT_NE(helpText().find("\n  " + utf8(option.name) + " "), std::string::npos) << utf8(option.name);
    }
}

TEST(MarkerText, IsReadAgainToTheLastDigit) {
    const auto read = parseMarkers(formatMarkers({{0.1, -3}, {1.0 / 3, 1e-300}}));
    ASSERT_EQ(read.size(), 2u);
    EXPECT_TRUE(read[0].x == 0.1 && read[1].x == 1.0 / 3 && read[1].y == 1e-300);
    EXPECT_TRUE(parseMarkers("x,y").empty());
    const auto loose = parseMarkers("\xEF\xBB\xBF x , y\r\n\r\n\t1.5 , -2\r\n3,4");
    EXPECT_EQ(loose.at(0).x * 10 + loose.at(1).y, 19);
}

TEST(MarkerText, ErrorsNameTheLine) {
    EXPECT_EQ(errorOf(parseMarkers, "1,2\n"), "line 1 is not the heading x,y");
    for (const std::string& bad : split("1|1,|,2|1,2,3|1;2|1,2x|1, ,2|nan,1|1e999,2|1 2,3", '|')) {
        EXPECT_EQ(errorOf(parseMarkers, "x,y\r\n1,2\r\n\r\n" + bad),
                  "line 4 is not two numbers with a comma between them")
            << bad;
    }
}

TEST(State, IsReadAgain) {
    const State state{{-100, 20, 700, 640}, true, L"heat", L"C:\\a=b \u00E9\\"};
    EXPECT_EQ(parseState(formatState(state)), state);
    EXPECT_EQ(parseState(formatState(State())), State());
    for (const auto& [line, map] : {std::pair{"--scale fit", L"heat"}, {"--map ice", L"ice"}}) {
        Options options = parse(line);
        useState(options, state);
        useState(options, parseState("map=gone"));
        EXPECT_EQ(options.map->name, std::wstring(map));
    }
}

TEST(State, DamagedLinesCountForNothing) {
    for (const std::string& place :
         split("1,2,3|1,2,3,4,5|1,2,3,4x|5,5,5,9|1,2,99999999999,4|1,,3,4||0,0,40000,9", '|')) {
        EXPECT_TRUE(parseState("=\n\nplace\nplace=" + place).place.isEmpty()) << place;
    }
    EXPECT_EQ(parseState("later=9\r\n\xFF=\r\nmaximised=yes\r\nmap=ice\r\nplace=1,2,3,4"),
              (State{{1, 2, 3, 4}, false, L"ice", L""}));
}

} // namespace
} // namespace talview
