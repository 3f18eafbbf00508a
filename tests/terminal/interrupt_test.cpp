// Ctrl-C while a statement runs: what is under way stops, nothing is left in part, the session goes on.
#include <gmock/gmock.h>

#include <filesystem>

#include "tests/support/loopback_web_server.h"
#include "tests/terminal/kwsh_at_terminal.h"

namespace korvex::tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class TerminalInterrupt : public testing::Test {
protected:
    /// A copy that takes long: of a body that has no end in sight.
    std::string endlessCopy(const std::string& outputs = {}) const {
        return outputs + "copyfile('" + server.address() + "/endless', 'big')";
    }
    /// Waits until the copy is under way.
    void waitForCopy() const { server.waitForRequest("/endless"); }

    /// What is in the scratch folder beside the configuration.
    std::vector<std::string> leftBehind() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(scratch.path())) {
            if (entry.path().filename() != "configuration") names.push_back(entry.path().filename().string());
        }
        return names;
    }

    const ScratchFolder scratch;
    const LoopbackWebServer server{LoopbackWebServer::Protocol::http};
};

TEST_F(TerminalInterrupt, StopsATransferAndLeavesNothingInPart) {
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type(endlessCopy() + "\n");
    waitForCopy();
    kwsh.interrupt();
    kwsh.readUntil("(KORVEX:host:interrupted)");
    kwsh.readUntilPrompt();
    EXPECT_THAT(leftBehind(), testing::IsEmpty());
    EXPECT_THAT(kwsh.run("x = 12"), HasSubstr("x =\r\n    12"));
}

TEST_F(TerminalInterrupt, OutputsComeBeforeTheErrorOfTheStatement) {
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type(endlessCopy("s = ") + "\n");
    waitForCopy();
    kwsh.interrupt();
    EXPECT_THAT(kwsh.readUntil("Error:"), HasSubstr("s =\r\n    0\r\n"));
    kwsh.readUntil("(KORVEX:host:interrupted)");
    kwsh.readUntilPrompt();
}

TEST_F(TerminalInterrupt, PressedAgainItChangesNothing) {
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type(endlessCopy() + "\n");
    waitForCopy();
    for (int press = 0; press < 20; ++press)
        kwsh.interrupt();
    kwsh.readUntil("(KORVEX:host:interrupted)");
    kwsh.readUntilPrompt();
    EXPECT_THAT(leftBehind(), testing::IsEmpty());
    // Presses that came late drop a line, and no more.
    kwsh.type("\nexit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

TEST_F(TerminalInterrupt, EndsAScriptWithStatus1) {
    scratch.writeFile("configuration/script.k", endlessCopy() + "\nx = 12\n");
    KwshAtTerminal kwsh(scratch, {(scratch.path() / "configuration/script.k").string()});
    waitForCopy();
    kwsh.interrupt();
    EXPECT_THAT(kwsh.readRest(), AllOf(HasSubstr("(KORVEX:host:interrupted)"), Not(HasSubstr("12"))));
    EXPECT_EQ(kwsh.exitStatus(), 1);
    EXPECT_THAT(leftBehind(), testing::IsEmpty());
}

TEST_F(TerminalInterrupt, CannotBeCaught) {
    const std::string script = "try\n" + endlessCopy() + "\ncatch e\ny = 34\nend\nx = 12\n";
    scratch.writeFile("configuration/script.k", script);
    KwshAtTerminal kwsh(scratch, {(scratch.path() / "configuration/script.k").string()});
    waitForCopy();
    kwsh.interrupt();
    EXPECT_THAT(kwsh.readRest(), AllOf(HasSubstr("interrupted"), Not(HasSubstr("34")), Not(HasSubstr("12"))));
    EXPECT_EQ(kwsh.exitStatus(), 1);
}

TEST_F(TerminalInterrupt, EndsAWaitForAServer) {
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("copyfile('" + server.address() + "/stalling', 'a')\n");
    server.waitForRequest("/stalling");
    kwsh.interrupt();
    kwsh.readUntil("(KORVEX:host:interrupted)");
    kwsh.readUntilPrompt();
    EXPECT_THAT(leftBehind(), testing::IsEmpty());
}

TEST_F(TerminalInterrupt, StopsACommandOfTheShell) {
    KwshAtTerminal kwsh(scratch);
    kwsh.readFirstPrompt();
    kwsh.type("!yes runs\n");
    kwsh.readUntil("runs\r\nruns\r\n");
    kwsh.interrupt();
    kwsh.readUntil("(KORVEX:host:interrupted)");
    kwsh.readUntilPrompt();
    kwsh.type("exit\n");
    EXPECT_EQ(kwsh.exitStatus(), 0);
}

}  // namespace
}  // namespace korvex::tests
