// What a benchmark has measured, in a form for programs: scripts/bench makes its tables and pictures of it.
//
// Where the environment variable KORVEX_BENCH_RESULTS names a file, each contest and figure is added to it as
// a line of fields with tabs between; without it nothing is written. What a benchmark prints is for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvex::bench {

/// Two ways of doing the same, in seconds.
struct Contest {
    std::string_view command;  ///< what is measured, as "delete"
    std::string name;          ///< under which circumstances
    std::string_view peer;
    double ours;
    double peers;
    double goal = 0;  ///< the largest ratio of our time to the peer's that is good enough; 0 for none
};

/// What has a limit and no peer.
struct Figure {
    std::string_view command;
    std::string name;
    std::string_view unit;
    double value;
    double limit;
};

/// Raise `std::runtime_error` when the file cannot be written.
void record(const Contest& contest);
void record(const Figure& figure);

/// Takes a number off the front of the words, if there is one; otherwise gives `standard`.
int takeRounds(std::vector<std::string>& words, int standard);

}  // namespace korvex::bench
