// The manual page of kwsh against the program.
#include <gmock/gmock.h>

#include <regex>

#include "tests/packaging/listed_options.h"
#include "tests/packaging/text_files.h"

namespace korvex::tests {
namespace {

/// The options that have an entry of their own in the section of the options.
std::set<std::string> describedOptions() {
    const std::string manual = projectText("share/man/kwsh.1");
    const std::size_t begin = manual.find("\n.Sh OPTIONS\n");
    const std::string section = manual.substr(begin, manual.find("\n.Sh ", begin + 1) - begin);
    const std::regex option("Fl( Fl)?( [a-z][a-z-]*)?");
    std::set<std::string> options;
    for (const std::string& line : linesOf(section)) {
        if (!line.starts_with(".It ")) continue;
        for (std::sregex_iterator found(line.begin(), line.end(), option), end; found != end; ++found) {
            const std::string name = (*found)[2].matched ? (*found)[2].str().substr(1) : "";
            options.insert(((*found)[1].matched ? "--" : "-") + name);
        }
    }
    return options;
}

TEST(Manual, DescribesTheOptionsThatHelpListsAndNoOthers) {
    EXPECT_THAT(describedOptions(), testing::ContainerEq(listedOptions()));
    EXPECT_TRUE(listedOptions().contains("--help"));
}

TEST(Manual, NamesEveryCommand) {
    const std::string manual = projectText("share/man/kwsh.1");
    for (const char* command : {"copyfile", "movefile", "mkdir", "rmdir", "delete", "recycle", "dir", "what",
                                "fileattrib", "isfile", "isfolder"}) {
        EXPECT_THAT(manual, testing::HasSubstr(std::string("\n.Ic ") + command)) << command;
    }
}

}  // namespace
}  // namespace korvex::tests
