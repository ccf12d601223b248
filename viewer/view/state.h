// What the program keeps from one run to the next, as text.
#pragma once

#include "viewer/view/geometry.h"
#include "viewer/view/options.h"

#include <string>
#include <string_view>

namespace talview {

struct State {
    Box place; // of the window on the desktop, when it is neither maximised nor full screen; empty: unknown
    bool isMaximised = false;
    std::wstring map;    // a colour map's name; empty: unknown
    std::wstring folder; // where the last picture lies; empty: unknown
    friend bool operator==(const State&, const State&) = default;
};

// Lines of a key, = and a value, in UTF-8. Lines that are damaged, and keys that another version may have
// written, count for nothing.
[[nodiscard]] State parseState(std::string_view text);
[[nodiscard]] std::string formatState(const State& state);

// The map, unless the command line names one, and the folder.
void useState(Options& options, const State& state);

} // namespace talview
