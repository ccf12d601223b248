// Timing several ways to do the same work in turns, so that whatever else the machine does meets all of them.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace talx::bench {

// One way to do a work on a picture.
struct Way {
    std::string name; // of the peer; empty for the project's own
    std::function<void(std::uint8_t* buffer)> run;
};

// Adds a row to the table: the project's way first, then what a user would pick instead. buffer holds random
// bytes of that size before the first of them; a peer that leaves other bytes than the project is marked.
void addWork(const std::string& name, std::size_t bufferBytes, std::vector<Way> ways);

// Runs everything that was added and prints the table. The times are medians, as multiples of copying the
// 32-bit pixels of the view (unitBytes) in the same turns.
int printTable(int argc, char** argv, std::size_t unitBytes);

// Bytes that no cache or branch predictor can guess.
[[nodiscard]] std::vector<std::uint8_t> noise(std::size_t bytes);

} // namespace talx::bench
