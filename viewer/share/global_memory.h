// Owner of a block of memory that programs of the system hand to each other.
#pragma once

#include <windows.h>

#include <memory>

namespace talview {

struct FreeGlobal {
    void operator()(HGLOBAL memory) const { GlobalFree(memory); }
};

using GlobalMemory = std::unique_ptr<void, FreeGlobal>;

} // namespace talview
