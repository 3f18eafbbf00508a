// What the benchmarks have recorded, read back.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace korvex::bench::report {

struct Contest {
    std::string command;
    std::string name;
    std::string peer;
    double ours = 0;   ///< seconds
    double peers = 0;  ///< seconds
    double goal = 0;   ///< 0 for none

    double ratio() const noexcept { return ours / peers; }
    bool hasGoal() const noexcept { return goal > 0; }
    bool isGoalMet() const noexcept { return !hasGoal() || ratio() <= goal; }
};

struct Figure {
    std::string command;
    std::string name;
    std::string unit;
    double value = 0;
    double limit = 0;

    bool isWithinLimit() const noexcept { return value <= limit; }
};

/// All that was measured in one place, as on one file system.
struct Place {
    std::string title;
    std::vector<Contest> contests;
    std::vector<Figure> figures;
};

/// Raises `std::runtime_error` for a file that cannot be read, or a line that is no result.
Place readPlace(std::string title, const std::filesystem::path& results);

/// Names and values, a pair a line with a tab between. Raises `std::runtime_error` as above.
using Description = std::vector<std::pair<std::string, std::string>>;
Description readDescription(const std::filesystem::path& file);

/// A quantity in a few digits: "0.034", "1.20", "347".
std::string shortNumber(double number);
/// With two digits behind the point.
std::string ratioText(double ratio);

}  // namespace korvex::bench::report
