// Where the state is kept from one run to the next: Hemlar\talview\state.txt in the person's application
// data.
#pragma once

#include "viewer/view/state.h"

namespace talview {

// Without a file, or with one that cannot be read, nothing is known.
[[nodiscard]] State readState();
// The state is no reason to bother anybody: what cannot be written is not.
void writeState(const State& state);

} // namespace talview
