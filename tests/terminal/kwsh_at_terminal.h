// kwsh in a scratch folder, with a configuration folder of its own in it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/posix/pseudo_terminal.h"
#include "tests/support/scratch_folder.h"

namespace korvex::tests {

class KwshAtTerminal : public PseudoTerminal {
public:
    using Variables = std::map<std::string, std::string>;

    explicit KwshAtTerminal(const ScratchFolder& scratch, const std::vector<std::string>& arguments = {},
                            const Variables& variables = {})
        : PseudoTerminal(programIn(scratch, arguments, variables)) {}

    /// Waits for the first prompt.
    void readFirstPrompt() { readUntil(">> "); }
    /// Waits for a prompt on a new line; gives what came in front of it. Keys that change a line may show its
    /// own prompt again.
    std::string readUntilPrompt() { return readUntil("\r\n>> "); }
    /// Types a statement, and gives what came up to the next prompt.
    std::string run(const std::string& statement) {
        type(statement + "\n");
        return readUntilPrompt();
    }

private:
    static TerminalProgram programIn(const ScratchFolder& scratch, const std::vector<std::string>& arguments,
                                     const Variables& variables) {
        TerminalProgram program{KWSH_PROGRAM};
        const std::string folder = scratch.path().string();
        program.arguments = {"--cd", folder, "--config", folder + "/configuration"};
        program.arguments.insert(program.arguments.end(), arguments.begin(), arguments.end());
        program.environment = variables;
        program.environment.insert({{"TERM", "dumb"}, {"COLUMNS", ""}, {"NO_COLOR", ""}});
        return program;
    }
};

}  // namespace korvex::tests
