// Texts for whoever started the program. It has no console of its own.
#pragma once

#include <string>

namespace talview {

enum class Output { standard, error };

// Writes UTF-8 to standard output or standard error where that goes somewhere, otherwise to the console that
// the program was started from. Where there is neither, a box shows it if that may be: somebody is there who
// can close it.
void tell(Output output, const std::string& text, bool mayShowBox);

} // namespace talview
