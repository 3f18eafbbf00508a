// Colours at a terminal, and none elsewhere.
#include <gmock/gmock.h>

#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* escape = "\x1B[";
constexpr const char* redError = "\x1B[1;31mError:\x1B[0m";

std::string shownFor(const std::vector<std::string>& arguments, const KwshAtTerminal::Variables& variables) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch, arguments, variables);
    return kwsh.readRest();
}

TEST(TerminalColours, ErrorsAndHeadingsHaveThem) {
    EXPECT_THAT(shownFor({"-e", "nothing"}, {{"TERM", "xterm"}}), HasSubstr(redError));
    EXPECT_THAT(shownFor({"-e", "help"}, {{"TERM", "xterm"}}), HasSubstr("\x1B[1mThe session\x1B[0m"));
}

TEST(TerminalColours, ThePromptHasThemAndCanBeTypedAt) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch, {}, {{"TERM", "xterm"}});
    kwsh.readUntil("\x1B[1;34m>");
    kwsh.readUntil(">\x1B[0m ");
    kwsh.type("x = 12\n");
    EXPECT_THAT(kwsh.readUntil("    12\r\n"), HasSubstr("x =\r\n"));
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalColours, CanBeRefused) {
    EXPECT_THAT(shownFor({"-e", "nothing"}, {{"TERM", "xterm"}, {"NO_COLOR", "1"}}), Not(HasSubstr(escape)));
    EXPECT_THAT(shownFor({"-e", "nothing"}, {{"TERM", "dumb"}}), Not(HasSubstr(escape)));
    EXPECT_THAT(shownFor({"--color=never", "-e", "nothing"}, {{"TERM", "xterm"}}), Not(HasSubstr(escape)));
}

TEST(TerminalColours, AChoiceCountsMoreThanVariables) {
    EXPECT_THAT(shownFor({"--color=always", "-e", "nothing"}, {{"TERM", "dumb"}, {"NO_COLOR", "1"}}),
                HasSubstr(redError));
}

TEST(TerminalColours, WhatProgramsReadHasNone) {
    EXPECT_THAT(shownFor({"--color=always", "--json", "-e", "help", "-e", "nothing"}, {{"TERM", "xterm"}}),
                Not(HasSubstr(escape)));
    EXPECT_THAT(
        shownFor({"--color=always", "--transcript", "-e", "help", "-e", "nothing"}, {{"TERM", "xterm"}}),
        Not(HasSubstr(escape)));
}

}  // namespace
}  // namespace korvex::tests
