// Lines of results.
#include "bench/support/results.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace korvex::bench {

namespace {

constexpr const char* fileVariable = "KORVEX_BENCH_RESULTS";

template <class... Fields>
void addLine(const char* kind, const Fields&... fields) {
    const char* const path = std::getenv(fileVariable);
    if (path == nullptr || *path == '\0') return;
    std::ofstream file(path, std::ios::app);
    file << kind;
    ((file << '\t' << fields), ...);
    file << std::endl;
    if (!file) throw std::runtime_error(std::string(path) + " cannot be written");
}

}  // namespace

void record(const Contest& contest) {
    addLine("contest", contest.command, contest.name, contest.peer, contest.ours, contest.peers,
            contest.goal);
}

void record(const Figure& figure) {
    addLine("figure", figure.command, figure.name, figure.unit, figure.value, figure.limit);
}

int takeRounds(std::vector<std::string>& words, int standard) {
    constexpr std::string_view digits = "0123456789";
    if (words.empty() || words.front().find_first_not_of(digits) != std::string::npos) return standard;
    const int rounds = std::atoi(words.front().c_str());
    words.erase(words.begin());
    return rounds;
}

}  // namespace korvex::bench
