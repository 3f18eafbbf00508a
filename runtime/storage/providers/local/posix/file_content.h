// The content of one open file, into another.
#pragma once

#include <sys/stat.h>

#include "runtime/storage/providers/local/posix/copy_abilities.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

/// An errno and the side at which it came up; converts to true when there is one.
struct Failure {
    int systemError = 0;
    Side side = sourceSide;
    explicit operator bool() const noexcept { return systemError != 0; }
};

/// Is told how far the copy of one file is, where that takes long enough to be told.
class CopyWatcher {
public:
    virtual ~CopyWatcher() = default;
    /// `size` in bytes, as it is at the beginning.
    virtual void begins(off_t size) = 0;
    /// Some more bytes have gone, holes included. The last ones are not told.
    virtual void copied(off_t bytes) = 0;
};

/// Two open files of a copy, the second one empty.
struct OpenPair {
    int source;
    const struct ::stat& sourceStatus;
    int destination;
    dev_t destinationDevice;
};

/// Whether a file takes less room than its size says.
bool mayHaveHoles(const struct ::stat& status) noexcept;

/// Copies from the start to the end of the source: shares the blocks where the file system can, keeps holes,
/// lets the kernel copy where that is faster, reads and writes otherwise. The end is where nothing more is to
/// be read; where sizes can be believed, a file is also at its end when it has given as much as its size
/// said. A file that shrinks meanwhile is copied as far as it goes, and never gets zeros that it did not
/// have. A pending interrupt stops the copy of a large file: `interruptedError`. `watcher` may be null.
Failure copyContent(const OpenPair& files, const CopyAbilities& abilities, CopyWatcher* watcher);

}  // namespace korvex::runtime::storage::posix
