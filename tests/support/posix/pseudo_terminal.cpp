// forkpty, and reading what the program writes.
#include "tests/support/posix/pseudo_terminal.h"

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstring>
#include <stdexcept>

extern char** environ;

namespace korvex::tests {
namespace {

constexpr int longestSilence = 60'000;  // milliseconds

/// The variables of this process, with those of the program in place of or beside them.
std::vector<std::string> variablesFor(const TerminalProgram& program) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view name = std::string_view(*variable).substr(0, std::strcspn(*variable, "="));
        if (!program.environment.contains(std::string(name))) variables.emplace_back(*variable);
    }
    for (const auto& [name, value] : program.environment) {
        if (!value.empty()) variables.push_back(name + "=" + value);
    }
    return variables;
}

/// As the system takes them.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

PseudoTerminal::PseudoTerminal(const TerminalProgram& program) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = program.columns;
    std::vector<std::string> words = program.arguments;
    words.insert(words.begin(), program.path);
    std::vector<std::string> variables = variablesFor(program);
    const std::vector<char*> arguments = pointersTo(words);
    const std::vector<char*> environment = pointersTo(variables);
    process_ = ::forkpty(&terminal_, nullptr, nullptr, &size);
    if (process_ < 0) throw std::runtime_error("there is no pseudo terminal");
    // Other threads of the test may hold locks, so the new process does nothing but this.
    if (process_ == 0) {
        ::execve(program.path.c_str(), arguments.data(), environment.data());
        ::_exit(127);
    }
}

PseudoTerminal::~PseudoTerminal() {
    ::close(terminal_);
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }
}

void PseudoTerminal::type(std::string_view keys) {
    while (!keys.empty()) {
        const ssize_t count = ::write(terminal_, keys.data(), keys.size());
        if (count <= 0) throw std::runtime_error("the terminal takes no keys");
        keys.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool PseudoTerminal::readMore() {
    pollfd waiting{terminal_, POLLIN, 0};
    if (::poll(&waiting, 1, longestSilence) <= 0) return false;
    std::array<char, 4096> block{};
    const ssize_t count = ::read(terminal_, block.data(), block.size());
    if (count <= 0) return false;
    pending_.append(block.data(), static_cast<std::size_t>(count));
    return true;
}

std::string PseudoTerminal::take(std::size_t count) {
    std::string text = pending_.substr(0, count);
    pending_.erase(0, text.size());
    return text;
}

std::string PseudoTerminal::readUntil(std::string_view wanted) {
    while (pending_.find(wanted) == std::string::npos && readMore()) {
    }
    const std::size_t at = pending_.find(wanted);
    if (at == std::string::npos) {
        throw std::runtime_error("'" + std::string(wanted) + "' does not come behind: " + pending_);
    }
    return take(at + wanted.size());
}

std::string PseudoTerminal::readRest() {
    while (readMore()) {
    }
    return take(std::string::npos);
}

int PseudoTerminal::exitStatus() {
    int status = 0;
    if (::waitpid(process_, &status, 0) != process_) return -1;
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace korvex::tests
