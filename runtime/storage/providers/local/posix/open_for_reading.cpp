// A file opened for its content.
#include "runtime/storage/providers/local/posix/open_for_reading.h"

#include <fcntl.h>
#include <time.h>

#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"

namespace korvex::runtime::storage::posix {

namespace {

constexpr int readFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
/// Together a minute: longer than the system leaves anybody a lease that is in the way.
constexpr int mostWaits = 6000;

/// 0, or why it is no file.
int lookAt(const FileDescriptor& opened, struct ::stat& status) noexcept {
    return ::fstat(opened.get(), &status) == 0 ? unlessFile(status) : errno;
}

/// Somebody's lease on a file is being taken from them: in steps, so that an interrupt is noticed.
void waitForLease() noexcept {
    constexpr long step = 10'000'000;
    const struct ::timespec wait { 0, step };
    ::nanosleep(&wait, nullptr);
}

}  // namespace

int unlessFile(const struct ::stat& status) noexcept {
    if (S_ISREG(status.st_mode)) return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP;
}

FileDescriptor openForReading(EntryAt entry, Links links, struct ::stat& status, int& systemError,
                              Lease lease) noexcept {
    const int flags = links == Links::follow ? readFlags : readFlags | O_NOFOLLOW;
    FileDescriptor opened;
    for (int waits = 0;; ++waits) {
        opened = FileDescriptor(::openat(entry.folder, entry.name, flags));
        systemError = opened ? 0 : errno;
        if (systemError != EAGAIN || lease == Lease::isLeft || waits == mostWaits) break;
        if (interpreter::isInterruptPending()) {
            systemError = interruptedError;
            break;
        }
        waitForLease();
    }
    if (opened) systemError = lookAt(opened, status);
    return systemError == 0 ? std::move(opened) : FileDescriptor();
}

}  // namespace korvex::runtime::storage::posix
