// Statements at the prompt: what is typed arrives as it is, blocks wait for their end, the shell reads on.
#include <gmock/gmock.h>

#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

class TerminalStatements : public testing::Test {
protected:
    TerminalStatements() { kwsh.readFirstPrompt(); }

    const ScratchFolder scratch;
    KwshAtTerminal kwsh{scratch};
};

TEST_F(TerminalStatements, BytesThatAreNoTextArriveAsTheyAre) {
    EXPECT_THAT(kwsh.run("double('\xFF"
                         "a\xC3')"),
                HasSubstr("56575    97    56515"));
    scratch.writeFile("b\xFF");
    EXPECT_THAT(kwsh.run("isfile b\xFF"), HasSubstr("ans =\r\n    1"));
}

TEST_F(TerminalStatements, CharactersOfSeveralBytesArriveAsTheyAre) {
    EXPECT_THAT(kwsh.run("double('\xC3\xBC\xE2\x82\xAC\xF0\x9F\x92\x80')"),
                HasSubstr("252    8364    55357    56448"));
}

TEST_F(TerminalStatements, ABlockIsRunWhenItsEndIsTyped) {
    kwsh.type("for k = [7 8]\n");
    kwsh.readUntil(".. ");
    kwsh.type("if k == 8\n");
    kwsh.readUntil(".. ");
    kwsh.type("k\n");
    kwsh.readUntil(".. ");
    kwsh.type("end\n");
    kwsh.readUntil(".. ");
    const std::string shown = kwsh.run("end");
    EXPECT_THAT(shown, HasSubstr("k =\r\n    8"));
    EXPECT_THAT(shown, Not(HasSubstr("    7")));
}

TEST_F(TerminalStatements, ACommandOfTheShellReadsWhatIsTyped) {
    kwsh.type("!echo ready; read word; echo \"got $word\"\n");
    kwsh.readUntil("\r\nready\r\n");
    kwsh.type("this\n");
    EXPECT_THAT(kwsh.readUntilPrompt(), HasSubstr("got this"));
    EXPECT_THAT(kwsh.run("isempty('')"), HasSubstr("ans =\r\n    1"));
}

TEST_F(TerminalStatements, CtrlCEndsALoopWithItsCommand) {
    kwsh.type("for k = [1 2]\n");
    kwsh.readUntil(".. ");
    kwsh.type("!yes turn\n");
    kwsh.readUntil(".. ");
    kwsh.type("end\n");
    kwsh.readUntil("turn\r\nturn\r\n");
    kwsh.interrupt();
    EXPECT_THAT(kwsh.readUntilPrompt(), HasSubstr("(KORVEX:host:interrupted)"));
    EXPECT_THAT(kwsh.run("k"), HasSubstr("k =\r\n    1"));
}

}  // namespace
}  // namespace korvex::tests
