// Processes of tests, and the memory that they share.
#include "tests/unit/configuration/posix/child_process.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <iostream>
#include <system_error>

namespace korvex::tests {

namespace {

[[noreturn]] void raiseSystemError() { throw std::system_error(errno, std::generic_category()); }

[[noreturn]] void run(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& error) {
        std::cerr << "child process: " << error.what() << std::endl;
        ::_exit(1);
    }
    ::_exit(0);
}

}  // namespace

ChildProcess::ChildProcess(const std::function<void()>& work) : id_(::fork()) {
    if (id_ < 0) raiseSystemError();
    if (id_ == 0) run(work);
}

ChildProcess::~ChildProcess() {
    if (id_ > 0) kill();
}

bool ChildProcess::hasEnded() const {
    ::siginfo_t ended{};
    if (::waitid(P_PID, static_cast<::id_t>(id_), &ended, WEXITED | WNOHANG | WNOWAIT) != 0)
        raiseSystemError();
    return ended.si_pid == id_;
}

int ChildProcess::end() {
    int status = 0;
    while (::waitpid(id_, &status, 0) < 0) {
        if (errno != EINTR) raiseSystemError();
    }
    id_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

int ChildProcess::kill() {
    ::kill(id_, SIGKILL);
    return end();
}

void* mapSharedMemory(std::size_t bytes) {
    void* const memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) raiseSystemError();
    return memory;
}

void unmapSharedMemory(void* memory, std::size_t bytes) noexcept { ::munmap(memory, bytes); }

}  // namespace korvex::tests
