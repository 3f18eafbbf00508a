// The content and the attributes of one open file, into another.
#pragma once

#include <sys/stat.h>

#include <atomic>

namespace korvex::runtime::storage::posix {

/// What the file systems of a transfer have turned out not to do; shared by its workers, asked once each.
struct CopyAbilities {
    std::atomic<bool> sharesBlocks{true};
    std::atomic<bool> copiesInKernel{true};
    std::atomic<bool> hasExtendedAttributes{true};
};

/// Copies from the start to the end of `source` into the empty file `destination`: shares the blocks where
/// the file system can, keeps holes, lets the kernel copy where that is faster, reads and writes otherwise. A
/// file that grows or shrinks meanwhile is copied as far as it goes. 0 or the errno.
int copyContent(int source, const struct ::stat& sourceStatus, int destination, CopyAbilities& abilities);

/// Gives `destination` the extended attributes of `source`, as far as its file system takes them. 0 or the
/// errno.
int copyExtendedAttributes(int source, int destination, CopyAbilities& abilities);

/// Gives an open file or folder the permission bits and the time of last change. `isModeSet` tells that its
/// permission bits are right already. 0 or the errno.
int copyModeAndTimes(const struct ::stat& sourceStatus, int destination, bool isModeSet);

/// The permission bits that the process takes from every file it makes; all when it cannot be told.
mode_t fileModeMask();

}  // namespace korvex::runtime::storage::posix
