// What the program can do, in words: the page that a person sees in the window, and the text for the
// terminal.
#pragma once

#include <string>
#include <vector>

namespace talview {

struct HelpLine {
    std::wstring keys; // or what the mouse does; empty: what follows is a heading
    std::wstring does;
};

// Keys and mouse, in groups that begin with a heading.
[[nodiscard]] const std::vector<HelpLine>& helpLines();

// All options, keys and exit codes, in lines of up to 100 characters; UTF-8.
[[nodiscard]] std::string helpText();

} // namespace talview
