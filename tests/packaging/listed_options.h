// The options that `kwsh --help` lists.
#pragma once

#include <set>
#include <string>

namespace korvex::tests {

/// "-", "-e", "--json": each name of an option for itself and without its value.
std::set<std::string> listedOptions();

}  // namespace korvex::tests
