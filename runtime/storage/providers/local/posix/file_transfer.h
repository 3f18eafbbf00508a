// The transfer of one entry from folder to folder: a file, a link, a pipe.
//
// A new file is created exclusively and removed again when its copy fails. One that is replaced is written
// under a temporary name beside it and renamed over it, so that the old or the new one stands there at any
// time.
#pragma once

#include <fcntl.h>

#include <string>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/file_content.h"
#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

/// An errno and the side at which it came up; converts to true when there is one.
struct Failure {
    int systemError = 0;
    Side side = sourceSide;
    explicit operator bool() const noexcept { return systemError != 0; }
};

/// An entry, named relative to an open folder (or AT_FDCWD).
struct EntryAt {
    int folder;
    const char* name;
};

/// Names a temporary file of this program; unique in the process and, in all likelihood, beyond.
std::string temporaryName();

/// Transfers of entries under one policy. May be used by several threads at once.
class FileTransfer {
public:
    using ReplacementPolicy = foundation::storage::provider::ReplacementPolicy;

    explicit FileTransfer(ReplacementPolicy policy) : policy_(policy), modeMask_(fileModeMask()) {}

    /// Copies an entry of a kind that is no folder; a link as a link. `bytes` is what was copied.
    Failure copy(EntryAt source, EntryKind kind, EntryAt destination, off_t& bytes);
    /// Copies the file that the name leads to, links followed. What is no regular file is refused: EISDIR for
    /// a folder, EOPNOTSUPP for others.
    Failure copyFollowing(EntryAt source, EntryAt destination, off_t& bytes);
    /// Copies under a temporary name and renames, whatever stands there or not.
    Failure copyAtomically(EntryAt source, EntryKind kind, EntryAt destination);

    /// Whether the policy lets the entry be replaced: 0 when it may or nothing is there, EEXIST, EACCES, ...
    int mayReplace(EntryAt destination) const;

    CopyAbilities& abilities() noexcept { return abilities_; }

private:
    Failure copyFile(EntryAt source, int openFlags, EntryAt destination, off_t& bytes);
    Failure fill(int source, const struct ::stat& status, int destination);
    Failure replaceFile(int source, const struct ::stat& status, EntryAt destination);
    Failure copyLink(EntryAt source, EntryAt destination);
    Failure copySpecial(EntryAt source, EntryAt destination);

    const ReplacementPolicy policy_;
    const mode_t modeMask_;
    CopyAbilities abilities_;
};

/// Renames, for a folder only onto nothing: EEXIST when anything stands there. 0 or the errno.
int renameOntoNothing(EntryAt source, EntryAt destination) noexcept;

}  // namespace korvex::runtime::storage::posix
