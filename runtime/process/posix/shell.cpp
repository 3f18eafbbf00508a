// POSIX: a command line in /bin/sh, its output through a pipe.
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/process/process.h"
#include "runtime/text/encoding.h"

extern char** environ;

namespace korvex::runtime::process {
namespace {

[[noreturn]] void raiseSystemError(int error) {
    throw std::runtime_error(std::generic_category().message(error));
}

void require(int error) {
    if (error != 0) raiseSystemError(error);
}

std::string bytesOf(const std::u16string& value) {
    const std::optional<std::string> bytes = text::toBytes(value);
    if (!bytes) throw std::runtime_error("the text has units that are no characters");
    if (bytes->find('\0') != std::string::npos) throw std::runtime_error("the text has a zero character");
    return *bytes;
}

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

Pipe openPipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) raiseSystemError(errno);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// What happens in the new process before the shell begins.
class FileActions {
public:
    FileActions(const std::string& folder, int output, ShellInput input) {
        require(::posix_spawn_file_actions_init(&actions_));
        if (input == ShellInput::empty)
            require(::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
        require(::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO));
        require(::posix_spawn_file_actions_adddup2(&actions_, output, STDERR_FILENO));
        require(::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()));
    }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    const posix_spawn_file_actions_t* get() const noexcept { return &actions_; }

private:
    posix_spawn_file_actions_t actions_{};
};

/// Signals of the new process: Ctrl-C ends it, whatever this process does with the key.
class SpawnAttributes {
public:
    SpawnAttributes() {
        require(::posix_spawnattr_init(&attributes_));
        sigset_t defaults;
        ::sigemptyset(&defaults);
        ::sigaddset(&defaults, SIGINT);
        ::sigaddset(&defaults, SIGPIPE);
        require(::posix_spawnattr_setsigdefault(&attributes_, &defaults));
        require(::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF));
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const noexcept { return &attributes_; }

private:
    posix_spawnattr_t attributes_{};
};

/// A process that was started here; waited for at the latest when the object goes.
class ChildProcess {
public:
    explicit ChildProcess(pid_t id) : id_(id) {}
    ~ChildProcess() {
        if (!hasEnded_) wait(0);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool hasEnded() {
        if (!hasEnded_) wait(WNOHANG);
        return hasEnded_;
    }
    int exitStatus() {
        if (!hasEnded_) wait(0);
        return WIFSIGNALED(status_) ? 128 + WTERMSIG(status_) : WEXITSTATUS(status_);
    }

private:
    void wait(int options) noexcept {
        pid_t ended = -1;
        do {
            ended = ::waitpid(id_, &status_, options);
        } while (ended < 0 && errno == EINTR);
        hasEnded_ = ended != 0;
    }

    pid_t id_;
    int status_ = 0;
    bool hasEnded_ = false;
};

pid_t startShell(std::string command, const std::string& folder, int output, ShellInput input) {
    std::string shell = "sh";
    std::string option = "-c";
    char* arguments[] = {shell.data(), option.data(), command.data(), nullptr};
    const FileActions actions(folder, output, input);
    const SpawnAttributes attributes;
    pid_t id = -1;
    require(::posix_spawn(&id, "/bin/sh", actions.get(), attributes.get(), arguments, environ));
    return id;
}

/// Waits for output or the end of it. False when an interrupt has ended the shell: then only something in the
/// background holds the pipe open, which is not waited for.
bool waitForOutput(const FileDescriptor& pipe, ChildProcess& shell) {
    constexpr int lookAgainAfter = 200;  // milliseconds; an interrupt just before the call does not wake it
    for (;;) {
        pollfd waiting{pipe.get(), POLLIN, 0};
        const int ready = ::poll(&waiting, 1, lookAgainAfter);
        if (ready > 0) return true;
        if (ready < 0 && errno != EINTR) raiseSystemError(errno);
        if (interpreter::isInterruptPending() && shell.hasEnded()) return false;
    }
}

/// Owns the pipe's end, so that a receiver that raises does not leave the shell waiting for a reader.
void readUntilEnd(FileDescriptor pipe, ChildProcess& shell,
                  const std::function<void(std::string_view)>& receive) {
    std::array<char, 4096> block{};
    while (waitForOutput(pipe, shell)) {
        const ssize_t count = ::read(pipe.get(), block.data(), block.size());
        if (count == 0) return;
        if (count > 0) {
            receive({block.data(), static_cast<std::size_t>(count)});
        } else if (errno != EINTR) {
            raiseSystemError(errno);
        }
    }
}

}  // namespace

int runShellCommand(const std::u16string& command, const std::u16string& folder,
                    const std::function<void(std::string_view)>& receive, ShellInput input) {
    Pipe pipe = openPipe();
    ChildProcess shell(startShell(bytesOf(command), bytesOf(folder), pipe.writeEnd.get(), input));
    pipe.writeEnd.close();
    readUntilEnd(std::move(pipe.readEnd), shell, receive);
    return shell.exitStatus();
}

}  // namespace korvex::runtime::process
