// The built program at a terminal: prompt, Ctrl-C, history. The test is the one who types.
#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>

#include "runtime/process/process.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

/// kwsh behind a pseudo terminal of 60 columns.
class Terminal {
public:
    explicit Terminal(const ScratchFolder& scratch) {
        winsize size{};
        size.ws_row = 24;
        size.ws_col = 60;
        process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
        if (process_ == 0) {
            ::setenv("TERM", "dumb", 1);
            ::unsetenv("COLUMNS");
            const std::string work = scratch.path().string();
            const std::string configuration = work + "/configuration";
            ::execl(KWSH_PROGRAM, "kwsh", "--cd", work.c_str(), "--config", configuration.c_str(), nullptr);
            ::_exit(127);
        }
    }
    ~Terminal() {
        ::close(terminal_);
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
        }
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    void type(std::string_view keys) {
        ASSERT_EQ(::write(terminal_, keys.data(), keys.size()), ssize_t(keys.size()));
    }

    /// What has come up to and with `wanted`; all there was when it does not come.
    std::string readUntil(std::string_view wanted) {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (pending_.find(wanted) == std::string::npos && std::chrono::steady_clock::now() < limit) {
            pollfd waiting{terminal_, POLLIN, 0};
            if (::poll(&waiting, 1, 1000) <= 0) continue;
            std::array<char, 4096> block{};
            const ssize_t count = ::read(terminal_, block.data(), block.size());
            if (count <= 0) break;
            pending_.append(block.data(), static_cast<std::size_t>(count));
        }
        const std::size_t at = pending_.find(wanted);
        const std::string text = pending_.substr(0, at == std::string::npos ? at : at + wanted.size());
        pending_.erase(0, text.size());
        return text;
    }

    int exitStatus() {
        int status = 0;
        if (::waitpid(process_, &status, 0) != process_) return -1;
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    int terminal_ = -1;
    pid_t process_ = -1;
    std::string pending_;
};

TEST(KwshTerminal, RunsWhatIsTypedAndGoesOnAfterErrors) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("x = 12\n");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("x =\r\n    12"));
    terminal.type("nothing\n");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("(KORVEX:UndefinedFunction)"));
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exitStatus(), 0);
}

TEST(KwshTerminal, CtrlCDropsTheLineAndNotTheProgram) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("dropped");
    terminal.readUntil("dropped");
    terminal.type("\x03");
    terminal.readUntil(">> ");
    terminal.type("y = 34\n");
    const std::string shown = terminal.readUntil("34\r\n>> ");
    EXPECT_THAT(shown, HasSubstr("y =\r\n    34"));
    EXPECT_THAT(shown, Not(HasSubstr("Error")));
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exitStatus(), 0);
}

TEST(KwshTerminal, CtrlCStopsAShellCommand) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("!yes runs\n");
    terminal.readUntil("runs\r\nruns\r\n");
    terminal.type("\x03");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("(KORVEX:host:interrupted)"));
    terminal.type("exit\n");
    EXPECT_EQ(terminal.exitStatus(), 0);
}

TEST(KwshTerminal, TheEndOfTheInputEndsIt) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("\x04");
    EXPECT_EQ(terminal.exitStatus(), 0);
}

TEST(KwshTerminal, AStatementGoesOnBehindTheSecondPrompt) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("x = {1\n");
    terminal.readUntil(".. ");
    terminal.type("2}\n");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("    {[1]}\r\n    {[2]}"));
}

TEST(KwshTerminal, TheWindowOfTheTerminalIsUsed) {
    const ScratchFolder scratch;
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("repmat({'aaaaaaaaaa'}, 1, 4)\n");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("(columns 1 to 3)"));
}

TEST(KwshTerminal, LinesAreRememberedForTheNextTime) {
    const ScratchFolder scratch;
    {
        Terminal terminal(scratch);
        terminal.readUntil(">> ");
        terminal.type("x = 'gr\xC3\xBC\xC3\x9F';\n");
        terminal.readUntil(">> ");
        terminal.type("exit\n");
        EXPECT_EQ(terminal.exitStatus(), 0);
    }
    Terminal terminal(scratch);
    terminal.readUntil(">> ");
    terminal.type("\x10\x10");  // Ctrl-P: the line before, twice
    terminal.readUntil("gr\xC3\xBC\xC3\x9F';");
    terminal.type("\n");
    terminal.readUntil("\r\n>> ");
    terminal.type("double(x)\n");
    EXPECT_THAT(terminal.readUntil("\r\n>> "), HasSubstr("103    114    252    223"));
}

}  // namespace
}  // namespace korvex::tests
