// The prompt: what is typed is run, and the session goes on.
#include <gmock/gmock.h>

#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(TerminalPrompt, RunsWhatIsTypedAndGoesOnAfterErrors) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    EXPECT_THAT(kwsh.run("x = 12"), HasSubstr("x =\r\n    12"));
    EXPECT_THAT(kwsh.run("nothing"), HasSubstr("(KORVEX:UndefinedFunction)"));
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalPrompt, CtrlCDropsTheLineAndNotTheProgram) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("dropped");
    kwsh.readUntil("dropped");
    kwsh.interrupt();
    kwsh.readUntilPrompt();
    const std::string shown = kwsh.run("y = 34");
    EXPECT_THAT(shown, HasSubstr("y =\r\n    34"));
    EXPECT_THAT(shown, Not(HasSubstr("Error")));
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalPrompt, CtrlCDropsAStatementOfSeveralLines) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("x = {1\n");
    kwsh.readUntil(".. ");
    kwsh.interrupt();
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("isempty('')"), HasSubstr("ans =\r\n    1"));
}

TEST(TerminalPrompt, TheEndOfTheInputEndsIt) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("\x04");
    kwsh.readUntil("\r\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalPrompt, AStatementGoesOnBehindTheSecondPrompt) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("x = {1\n");
    kwsh.readUntil(".. ");
    EXPECT_THAT(kwsh.run("2}"), HasSubstr("    {[1]}\r\n    {[2]}"));
}

TEST(TerminalPrompt, TheWindowOfTheTerminalIsUsed) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    EXPECT_THAT(kwsh.run("repmat({'aaaaaaaaaa'}, 1, 4)"), HasSubstr("(columns 1 to 3)"));
}

}  // namespace
}  // namespace korvex::tests
