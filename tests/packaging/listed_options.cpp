// The options that `kwsh --help` lists.
#include "tests/packaging/listed_options.h"

#include <sstream>

#include "host/kwsh/options.h"
#include "tests/packaging/text_files.h"

namespace korvex::tests {

std::set<std::string> listedOptions() {
    constexpr const char* begin = "  -";
    std::set<std::string> options;
    for (const std::string& line : linesOf(host::usageText())) {
        if (!line.starts_with(begin)) continue;
        // As "-h,--help" or "--trace[=MASK]", and a blank behind it.
        std::istringstream names(line.substr(2, line.find(' ', 2) - 2));
        for (std::string name; std::getline(names, name, ',');)
            options.insert(name.substr(0, name.find_first_of("[=")));
    }
    return options;
}

}  // namespace korvex::tests
