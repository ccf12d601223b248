#include "bench/measure.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <random>

namespace talx::bench {
namespace {

struct Work {
    std::string name;
    std::size_t bufferBytes;
    std::vector<Way> ways;
};

std::vector<Work>& works() {
    static std::vector<Work> all;
    return all;
}

// The processor's time of this thread: what other programs take from it does not count.
double now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double timeOf(const std::function<void()>& run) {
    const double start = now();
    run();
    benchmark::ClobberMemory();
    return now() - start;
}

double median(std::vector<double>& times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

// Which peers leave the bytes that the project leaves.
std::vector<bool> sameResults(const Work& work, const std::vector<std::uint8_t>& before) {
    std::vector<bool> same;
    std::vector<std::uint8_t> first;
    for (const Way& way : work.ways) {
        std::vector<std::uint8_t> after = before;
        way.run(after.data());
        if (first.empty())
            first = after;
        same.push_back(after == first);
    }
    return same;
}

void measure(benchmark::State& state, const Work& work, std::size_t unitBytes) {
    const std::vector<std::uint8_t> before = noise(std::max(work.bufferBytes, unitBytes));
    std::vector<std::uint8_t> buffer = before, copy = before;
    const std::vector<bool> same = sameResults(work, before);

    std::vector<std::function<void()>> turns;
    for (const Way& way : work.ways)
        turns.emplace_back([&] { way.run(buffer.data()); });
    turns.emplace_back([&] { std::memcpy(copy.data(), buffer.data(), work.bufferBytes); });
    turns.emplace_back([&] { std::memcpy(copy.data(), buffer.data(), unitBytes); });

    // Whoever comes first after the others finds the caches in another state: everybody is first in turn.
    std::vector<std::vector<double>> times(turns.size());
    std::size_t first = 0;
    for ([[maybe_unused]] auto _ : state) {
        for (std::size_t i = 0; i < turns.size(); ++i) {
            const std::size_t turn = (first + i) % turns.size();
            times[turn].push_back(timeOf(turns[turn]));
        }
        ++first;
        state.SetIterationTime(times[0].back());
    }
    const double own = median(times[0]);
    const double bytes = median(times[turns.size() - 2]), unit = median(times.back());
    state.counters["us"] = own * 1e6;
    state.counters["view"] = own / unit;
    state.counters["bytes"] = own / bytes;
    for (std::size_t i = 1; i < work.ways.size(); ++i)
        state.counters["peer " + work.ways[i].name + (same[i] ? "" : "*")] = median(times[i]) / unit;
}

// One line of Markdown a work.
class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override {
        std::printf(
            "| work | us | x copying the view | x copying its own bytes | instead: x copying the view |\n"
            "|---|---|---|---|---|\n");
        return true;
    }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            std::printf("| %s | %.0f | **%.2f** | %.2f |", run.run_name.function_name.c_str(),
                        run.counters.at("us").value, run.counters.at("view").value,
                        run.counters.at("bytes").value);
            const char* separator = " ";
            for (const auto& [name, value] : run.counters) {
                if (name.rfind("peer ", 0) == 0) {
                    std::printf("%s%s %.2f", separator, name.c_str() + 5, value.value);
                    separator = ", ";
                }
            }
            std::printf(" |\n");
        }
        std::fflush(stdout);
    }
};

} // namespace

void addWork(const std::string& name, std::size_t bufferBytes, std::vector<Way> ways) {
    works().push_back({name, bufferBytes, std::move(ways)});
}

int printTable(int argc, char** argv, std::size_t unitBytes) {
    benchmark::Initialize(&argc, argv);
    for (const Work& work : works()) {
        benchmark::RegisterBenchmark(work.name.c_str(), [&work, unitBytes](benchmark::State& state) {
            measure(state, work, unitBytes);
        })->UseManualTime();
    }
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    std::printf(
        "\nMedians of turns taken one after the other, in the thread's own time. * another result.\n");
    return 0;
}

std::vector<std::uint8_t> noise(std::size_t bytes) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> v(bytes);
    std::generate(v.begin(), v.end(), [&] { return static_cast<std::uint8_t>(random()); });
    return v;
}

} // namespace talx::bench
