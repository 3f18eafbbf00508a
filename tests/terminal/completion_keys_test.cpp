// The key Tab.
#include <gmock/gmock.h>

#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;

TEST(TerminalCompletion, TabCompletesNamesAndOptionWords) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("recyc\t of\t\n");
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("recycle"), HasSubstr("off"));
}

TEST(TerminalCompletion, TabCompletesFilesOfTheCurrentFolder) {
    const ScratchFolder scratch;
    scratch.writeFile("data/it's two.txt");
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.run("cd data");
    kwsh.type("isfile(it\t)\n");
    EXPECT_THAT(kwsh.readUntil("ans =\r\n    1"), HasSubstr("isfile('it''s two.txt')"));
}

TEST(TerminalCompletion, AFolderStaysOpenForWhatIsInIt) {
    const ScratchFolder scratch;
    scratch.writeFile("data/notes.txt");
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("isfile da\tno\t\n");
    EXPECT_THAT(kwsh.readUntil("ans =\r\n    1"), HasSubstr("isfile data/notes.txt"));
}

TEST(TerminalCompletion, TheSecondTabListsTheCandidates) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("isf\t\t");
    kwsh.readUntil("isfile    isfolder\r\n");
    kwsh.readUntil("isf");
    kwsh.type("i\t('a')\n");
    EXPECT_THAT(kwsh.readUntil("ans =\r\n    0"), HasSubstr("isfile('a')"));
}

TEST(TerminalCompletion, TheRestOfTheLineStaysBehindTheCursor) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("recyc('off')");
    for (int key = 0; key < 7; ++key)
        kwsh.type("\x02");  // Ctrl-B
    kwsh.type("\t\n");
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("recycle"), HasSubstr("off"));
}

TEST(TerminalCompletion, NamesThatAreNoTextAreCompleted) {
    const ScratchFolder scratch;
    scratch.writeFile(
        "a\xFF"
        "b");
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("isfile a\t\n");
    kwsh.readUntil("ans =\r\n    1");
    kwsh.readUntilPrompt();
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalCompletion, LinesOfOneStatementAreCompletedTogether) {
    const ScratchFolder scratch;
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("recycle( ...\n");
    kwsh.readUntil(".. ");
    kwsh.type("'of\t)\n");
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("recycle"), HasSubstr("off"));
}

}  // namespace
}  // namespace korvex::tests
