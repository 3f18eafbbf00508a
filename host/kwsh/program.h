// The whole program behind `main`.
#pragma once

#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace korvex::host {

struct ProgramStreams {
    std::istream& input;
    std::ostream& output;
    std::ostream& errors;
};

/// Runs kwsh with these arguments (without the program's name) and gives its exit status.
int runProgram(const std::vector<std::string>& arguments, const ProgramStreams& streams);

}  // namespace korvex::host
