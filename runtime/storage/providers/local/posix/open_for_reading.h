// A file opened for its content: whatever else stands there is not waited for.
#pragma once

#include <sys/stat.h>

#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"

namespace korvex::runtime::storage::posix {

/// 0, or why it is no file: EISDIR for a folder, EOPNOTSUPP for a device, pipe or socket.
int unlessFile(const struct ::stat& status) noexcept;

/// What becomes of a file on which somebody has a lease: it is waited for until they give it up, or the
/// system takes it from them, or it is left alone with EAGAIN.
enum class Lease { isAwaited, isLeft };

/// Opens a file and tells its status. Without a descriptor there is the errno in `systemError`: EISDIR for a
/// folder, EOPNOTSUPP for a device, pipe or socket, ELOOP for a link that is not to be followed.
///
/// Never waits for the other end of a pipe, and never makes a terminal the process's own. A file on which
/// somebody has a lease is waited for, a minute at most; a pending interrupt ends the waiting with
/// `interruptedError`.
FileDescriptor openForReading(EntryAt entry, Links links, struct ::stat& status, int& systemError,
                              Lease lease = Lease::isAwaited) noexcept;

}  // namespace korvex::runtime::storage::posix
