// The keys, and setting the text.
#include "viewer/view/help.h"

#include "viewer/view/failure.h"
#include "viewer/view/option_table.h"

#include <sstream>

namespace talview {
namespace {

constexpr std::size_t lineLength = 100;
constexpr std::size_t column = 26; // where the explanations begin

// A row of two columns; words of the second one go to the next line where this one is full.
std::string row(const std::string& first, const std::string& second) {
    std::string text;
    std::string line = "  " + first + "  ";
    line.resize(std::max(line.size(), column), ' ');
    if (line.size() > column) {
        text = "  " + first + "\n";
        line.assign(column, ' ');
    }
    bool isBegun = false;
    std::istringstream words(second);
    for (std::string word; words >> word;) {
        if (isBegun && line.size() + 1 + word.size() > lineLength) {
            text += line + "\n";
            line.assign(column, ' ');
            isBegun = false;
        }
        line += (isBegun ? " " : "") + word;
        isBegun = true;
    }
    return text + line + "\n";
}

std::string heading(std::string text) {
    return text.insert(0, 1, '\n') + "\n";
}

} // namespace

const std::vector<HelpLine>& helpLines() {
    static const std::vector<HelpLine> lines = {
        {L"", L"File"},
        {L"Ctrl+O, drop", L"open a picture, or the first one of a folder"},
        {L"F5", L"read the picture again"},
        {L"Page Down, Page Up", L"next and previous picture of the folder"},
        {L"Ctrl+Page Down, Ctrl+Page Up", L"next and previous picture in the file"},
        {L"Ctrl+S", L"save what is shown"},
        {L"Ctrl+C", L"copy what is shown"},
        {L"Ctrl+Shift+C", L"copy position and value under the pointer"},
        {L"Ctrl+P", L"print what is shown"},
        {L"Esc", L"stop reading; leave this page, the full screen"},
        {L"", L"View"},
        {L"wheel, +, -", L"zoom about the pointer, or the middle"},
        {L"drag, middle drag, arrows", L"move the picture, with Shift+arrows by one pixel"},
        {L"0, F", L"fit the picture to the window"},
        {L"1", L"one pixel of the screen for each of the picture"},
        {L"Home", L"centre the picture"},
        {L"F11", L"full screen"},
        {L"M", L"how a scaled picture is sampled: nearest or centre"},
        {L"E", L"render engine: GDI or DirectDraw"},
        {L"", L"Contrast"},
        {L"right drag", L"limits: sideways moves them, up narrows, down widens"},
        {L"comma, period", L"lower and higher limits"},
        {L"[, ]", L"narrower and wider limits"},
        {L"A", L"limits of the picture's values"},
        {L"W", L"limits of the whole depth"},
        {L"R", L"limits as the picture was opened with"},
        {L"C", L"next colour map"},
        {L"X", L"blue below and red above the limits"},
        {L"K", L"hide masked pixels, or show them"},
        {L"", L"Overlays"},
        {L"G", L"grid and values of large pixels"},
        {L"B", L"colour bar"},
        {L"H", L"histogram"},
        {L"L, then drag", L"profile along a line; L again takes it away"},
        {L"O", L"hide or show overlays and markers"},
        {L"", L"Markers"},
        {L"Insert, Space, Shift+click", L"mark the pixel under the pointer"},
        {L"drag a marker", L"move it"},
        {L"Delete, Shift+click", L"delete the marker under the pointer"},
        {L"Tab", L"go to the next marker"},
        {L"Ctrl+M", L"save the markers beside the picture"},
        {L"Ctrl+L", L"read them again"},
        {L"", L"Help"},
        {L"F1", L"this page"},
    };
    return lines;
}

std::string helpText() {
    std::string text = "usage: talview [IMAGE|FOLDER] [options]\n"
                       "Shows a PNG, BMP, TIFF or JPEG picture, or the first one of a folder, in a window "
                       "through a\nrender engine.\n\nOptions\n";
    for (const Option& option : optionTable()) {
        const std::string name = utf8(option.name);
        const std::string does = option.does;
        // A text that ends in a colon is followed by what is allowed.
        text += row(name + (*option.value ? " " : "") + option.value,
                    does.ends_with(": ") ? does + allowedValues(option) : does);
    }
    for (const HelpLine& line : helpLines()) {
        text += line.keys.empty() ? heading(utf8(line.does)) : row(utf8(line.keys), utf8(line.does));
    }
    return text + "\nWith --save alone no window appears; without --save and --hold it stays until it is "
                  "closed.\nExit code: 0 done, 1 it cannot be done, 2 the command line is wrong.\n";
}

} // namespace talview
