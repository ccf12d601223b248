// The structure of picture files, behind the number of the frame.
#include "viewer/files/file_facts.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::size_t start = size > 0;
    const auto read = [&](std::uint64_t from, void* to, std::size_t count) {
        const std::uint64_t there = std::min<std::uint64_t>(size - std::min(start + from, size), count);
        std::copy_n(data + std::min(start + from, size), there, static_cast<std::uint8_t*>(to));
        return there;
    };
    const auto facts = talview::examine({size - start, read}, start > 0 ? data[0] : 0);
    if (facts.missing && (facts.missing->first < 0 || facts.missing->first > facts.missing->last)) {
        std::abort();
    }
    return 0;
}
