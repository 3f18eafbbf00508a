// The content and the attributes of one open file, into another.
#pragma once

#include <sys/stat.h>

#include <atomic>

#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

/// What the file systems of a transfer have turned out not to do; shared by its workers, asked once each.
struct CopyAbilities {
    std::atomic<bool> sharesBlocks{true};
    std::atomic<bool> copiesInKernel{true};
    std::atomic<bool> hasExtendedAttributes{true};
};

/// An errno and the side at which it came up; converts to true when there is one.
struct Failure {
    int systemError = 0;
    Side side = sourceSide;
    explicit operator bool() const noexcept { return systemError != 0; }
};

/// Copies from the start to the end of `source` into the empty file `destination`: shares the blocks where
/// the file system can, keeps holes, lets the kernel copy where that is faster, reads and writes otherwise.
/// The end is where nothing more is to be read: a file that grows or shrinks meanwhile is copied as far as it
/// goes.
Failure copyContent(int source, const struct ::stat& sourceStatus, int destination, CopyAbilities& abilities);

/// Gives `destination` the extended attributes of `source`, as far as its file system takes them.
Failure copyExtendedAttributes(int source, int destination, CopyAbilities& abilities);

/// Gives an open file or folder the permission bits and the time of last change, as far as its file system
/// keeps them. With `keepsOwner` also the owner, as far as the process may; the bits that lend the owner's
/// rights are left out where the owner is another one. 0 or the errno.
int copyModeAndTimes(const struct ::stat& sourceStatus, int destination, bool keepsOwner);

}  // namespace korvex::runtime::storage::posix
