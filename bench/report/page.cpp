// Tables of what was measured, one a place, and the machine in front of them.
#include "bench/report/page.h"

#include <ostream>
#include <string_view>

namespace korvex::bench::report {

namespace {

constexpr const char* introduction =
    "# Benchmarks\n\n"
    "<!-- Made by scripts/bench; a change here is lost with its next run. -->\n\n"
    "Each command against a peer that does the same, in turns on the same machine: medians of the time that\n"
    "passes. A ratio is our time to the peer's, so below 1 is faster. The peers are programs in processes "
    "of\n"
    "their own, or what the command stands on; the head of each file in `bench/` tells which, and why.\n";

/// What has a meaning of its own in a table is text here.
std::string cell(const std::string& text) {
    constexpr std::string_view marks = "|*<_";
    std::string escaped;
    for (const char unit : text) {
        if (marks.find(unit) != std::string_view::npos) escaped += '\\';
        escaped += unit;
    }
    return escaped;
}

void writeContests(std::ostream& page, const std::vector<Contest>& contests) {
    if (contests.empty()) return;
    page << "| command | contest | peer | ours | peer's | ratio | goal |\n"
         << "|---|---|---|---:|---:|---:|---|\n";
    for (const Contest& contest : contests) {
        page << "| " << contest.command << " | " << cell(contest.name) << " | `" << contest.peer << "` | "
             << shortNumber(contest.ours) << " s | " << shortNumber(contest.peers) << " s | "
             << ratioText(contest.ratio()) << " | ";
        if (contest.hasGoal()) {
            page << "at most " << ratioText(contest.goal) << ", "
                 << (contest.isGoalMet() ? "met" : "**missed**");
        }
        page << " |\n";
    }
    page << '\n';
}

void writeFigures(std::ostream& page, const std::vector<Figure>& figures) {
    if (figures.empty()) return;
    page << "| command | figure | value | limit |\n|---|---|---:|---|\n";
    for (const Figure& figure : figures) {
        page << "| " << figure.command << " | " << cell(figure.name) << " | " << shortNumber(figure.value)
             << ' ' << figure.unit << " | at most " << shortNumber(figure.limit) << ' ' << figure.unit << ", "
             << (figure.isWithinLimit() ? "met" : "**missed**") << " |\n";
    }
    page << '\n';
}

}  // namespace

void writePage(std::ostream& page, const Description& machine, const std::vector<Place>& places,
               const std::string& picture) {
    page << introduction << "\n![The ratios of all contests](" << picture << ")\n\n## The machine\n\n"
         << "| | |\n|---|---|\n";
    for (const auto& [name, value] : machine)
        page << "| " << name << " | " << cell(value) << " |\n";
    page << '\n';
    for (const Place& place : places) {
        page << "## " << place.title << "\n\n";
        writeContests(page, place.contests);
        writeFigures(page, place.figures);
    }
}

}  // namespace korvex::bench::report
