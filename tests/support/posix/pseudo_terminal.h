// A program behind a pseudo terminal. The test is the one who types.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::tests {

struct TerminalProgram {
    std::string path;
    std::vector<std::string> arguments = {};
    /// Set beside the variables of the test; one without a value is taken away.
    std::map<std::string, std::string> environment = {};
    unsigned short columns = 60;
};

class PseudoTerminal {
public:
    /// Starts the program.
    explicit PseudoTerminal(const TerminalProgram& program);
    /// Kills it when it still runs.
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    void type(std::string_view keys);
    /// Ctrl-C.
    void interrupt() { type("\x03"); }

    /// What has come up to and with `wanted`. Raises `std::runtime_error`, with what came instead, at the end
    /// and after a minute of silence.
    std::string readUntil(std::string_view wanted);
    /// Everything up to the program's end.
    std::string readRest();
    /// Waits for the program's end; -1 when a signal ended it.
    int exitStatus();

private:
    /// False when there is no more, or nothing comes any more.
    bool readMore();
    std::string take(std::size_t count);

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string pending_;
};

}  // namespace korvex::tests
