// A trace statement whose severity is off, in a loop, against the same loop without it. The mask has another
// severity, as it may have while somebody traces something else.
//
//   bench_trace [ITERATIONS [ROUNDS]]      default: 100000000, 15
//
// Goal: at most 1 ns above the empty loop.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "bench/support/interleaved.h"
#include "bench/support/results.h"
#include "io/filesystem/filemanip/command_frame_trace.h"

namespace {

namespace filemanip = korvex::filemanip;
namespace severity = foundation::log::severity;

constexpr double goalInNanoseconds = 1.0;

void emptyLoop(std::size_t iterations) {
    for (std::size_t i = 0; i < iterations; ++i)
        benchmark::DoNotOptimize(i);
}

void tracedLoop(std::size_t iterations) {
    const std::u16string path = u"/some/folder/file.txt";
    for (std::size_t i = 0; i < iterations; ++i) {
        filemanip::trace(severity::workingValue,
                         [&](auto& record) { record << "Absolute path: " << path + u"/" << i; });
        benchmark::DoNotOptimize(i);
    }
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::size_t iterations = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100'000'000;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 15;

    filemanip::traceLogger().setMask(severity::all & ~severity::workingValue);
    const korvex::bench::Medians seconds = korvex::bench::interleaved(
        rounds, [&] { tracedLoop(iterations); }, [&] { emptyLoop(iterations); });

    const double nanoseconds = 1e9 / static_cast<double>(iterations);
    const double cost = (seconds.ours - seconds.peer) * nanoseconds;
    korvex::bench::record(
        korvex::bench::Figure{"trace", "a statement that is switched off", "ns", cost, goalInNanoseconds});
    std::cout << "iterations " << iterations << ", rounds " << rounds << "\ntrace statement, off "
              << seconds.ours * nanoseconds << " ns\nempty loop           " << seconds.peer * nanoseconds
              << " ns\ncost                 " << cost << " ns (goal: at most " << goalInNanoseconds
              << " ns)\n";
    return cost <= goalInNanoseconds ? EXIT_SUCCESS : EXIT_FAILURE;
}
