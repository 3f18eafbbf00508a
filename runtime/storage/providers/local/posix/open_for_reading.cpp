// A file opened for its content.
#include "runtime/storage/providers/local/posix/open_for_reading.h"

#include <fcntl.h>
#include <stdio.h>

#include <array>
#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"

namespace korvex::runtime::storage::posix {

namespace {

constexpr int readFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY;

/// 0, or why it is no file.
int lookAt(const FileDescriptor& opened, struct ::stat& status) noexcept {
    if (::fstat(opened.get(), &status) != 0) return errno;
    if (S_ISREG(status.st_mode)) return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : EOPNOTSUPP;
}

/// Opens what is there without its content, and only a file anew, in the way that waits for a lease to end:
/// the opening of anything else could last for ever.
FileDescriptor openAfterLease(EntryAt entry, int linkFlags, int& systemError) noexcept {
    const FileDescriptor seen(::openat(entry.folder, entry.name, O_PATH | O_CLOEXEC | linkFlags));
    struct ::stat status {};
    systemError = seen ? lookAt(seen, status) : errno;
    if (systemError != 0) return {};
    std::array<char, 32> path{};
    ::snprintf(path.data(), path.size(), "/proc/self/fd/%d", seen.get());
    do {
        if (interpreter::isInterruptPending()) {
            systemError = interruptedError;
            return {};
        }
        FileDescriptor opened(::open(path.data(), readFlags));
        if (opened) return opened;
        systemError = errno;
    } while (systemError == EINTR);
    // Where open files have no such names, nobody can wait.
    if (systemError == ENOENT) systemError = EAGAIN;
    return {};
}

}  // namespace

FileDescriptor openForReading(EntryAt entry, Links links, struct ::stat& status, int& systemError) noexcept {
    const int linkFlags = links == Links::follow ? 0 : O_NOFOLLOW;
    FileDescriptor opened(::openat(entry.folder, entry.name, readFlags | O_NONBLOCK | linkFlags));
    systemError = opened ? 0 : errno;
    if (systemError == EAGAIN) opened = openAfterLease(entry, linkFlags, systemError);
    if (opened) systemError = lookAt(opened, status);
    return systemError == 0 ? std::move(opened) : FileDescriptor();
}

}  // namespace korvex::runtime::storage::posix
