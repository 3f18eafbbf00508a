// POSIX: what stands behind the standard streams, and the interrupt key.
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>

#include "runtime/interpreter/interrupts.h"
#include "runtime/process/process.h"

namespace korvex::runtime::process {
namespace {

int descriptorOf(Stream stream) noexcept {
    switch (stream) {
        case Stream::input: return STDIN_FILENO;
        case Stream::output: return STDOUT_FILENO;
        case Stream::error: return STDERR_FILENO;
    }
    return -1;
}

extern "C" void onInterruptKey(int) { interpreter::raiseInterrupt(); }

}  // namespace

bool isTerminal(Stream stream) noexcept { return ::isatty(descriptorOf(stream)) == 1; }

std::optional<unsigned> terminalColumns(Stream stream) noexcept {
    winsize size{};
    if (::ioctl(descriptorOf(stream), TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
    return size.ws_col;
}

bool waitForInput() noexcept {
    constexpr int lookAgainAfter = 200;  // milliseconds; an interrupt just before the call does not wake it
    for (;;) {
        if (interpreter::isInterruptPending()) return false;
        pollfd waiting{STDIN_FILENO, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, lookAgainAfter);
        // Where waiting fails, the read itself will tell.
        if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
    }
}

namespace {

/// Changes nothing but whether calls go on behind the signal; nothing at all while nobody handles it.
void letSignalsEndCalls(bool isWanted) noexcept {
    struct sigaction action {};
    if (::sigaction(SIGINT, nullptr, &action) != 0 || action.sa_handler != onInterruptKey) return;
    action.sa_flags = isWanted ? 0 : SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
}

}  // namespace

void handleInterruptKey() {
    struct sigaction action {};
    action.sa_handler = onInterruptKey;
    ::sigemptyset(&action.sa_mask);
    // Writing goes on behind the signal, or output would be lost half way. Calls that wait with a time limit,
    // as all in this program do, come back all the same, so that the one who waits can look at the flag.
    action.sa_flags = SA_RESTART;
    if (::sigaction(SIGINT, &action, nullptr) != 0) {
        throw std::runtime_error(std::generic_category().message(errno));
    }
}

InterruptibleReading::InterruptibleReading() noexcept { letSignalsEndCalls(true); }
InterruptibleReading::~InterruptibleReading() { letSignalsEndCalls(false); }

}  // namespace korvex::runtime::process
