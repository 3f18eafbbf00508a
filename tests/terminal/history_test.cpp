// Lines that were typed come back.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;

constexpr const char* lineBefore = "\x10";  // Ctrl-P

std::string historyIn(const ScratchFolder& scratch) {
    std::ifstream file(scratch.path() / "configuration/history", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void leave(KwshAtTerminal& kwsh) {
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST(TerminalHistory, LinesAreRememberedForTheNextTime) {
    const ScratchFolder scratch;
    {
        KwshAtTerminal kwsh(scratch);
        kwsh.readFirstPrompt();
        kwsh.run("x = 'gr\xC3\xBC\xC3\x9F';");
        leave(kwsh);
    }
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type(lineBefore);
    kwsh.type(lineBefore);
    kwsh.readUntil("gr\xC3\xBC\xC3\x9F';");
    kwsh.type("\n");
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("double(x)"), HasSubstr("103    114    252    223"));
}

TEST(TerminalHistory, BytesThatAreNoTextComeBackAsTheyWere) {
    const ScratchFolder scratch;
    {
        KwshAtTerminal kwsh(scratch);
        kwsh.readFirstPrompt();
        kwsh.run("x = 'a\xFF';");
        leave(kwsh);
    }
    EXPECT_EQ(historyIn(scratch), "x = 'a\xFF';\nexit\n");
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type(lineBefore);
    kwsh.type(lineBefore);
    kwsh.type("\n");
    kwsh.readUntilPrompt();
    EXPECT_THAT(kwsh.run("double(x)"), HasSubstr("97    56575"));
}

TEST(TerminalHistory, WhatAScriptRunsIsNotKept) {
    const ScratchFolder scratch;
    scratch.writeFile("script.k", "x = 1\n");
    KwshAtTerminal script(scratch, {(scratch.path() / "script.k").string()});
    script.readRest();
    EXPECT_EQ(script.exitStatus(), 0);
    KwshAtTerminal statement(scratch, {"-e", "x = 1"});
    statement.readRest();
    EXPECT_EQ(statement.exitStatus(), 0);
    EXPECT_FALSE(std::filesystem::exists(scratch.path() / "configuration/history"));
}

}  // namespace
}  // namespace korvex::tests
