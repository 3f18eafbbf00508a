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
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

/// An entry, named relative to an open folder (or AT_FDCWD).
struct EntryAt {
    int folder;
    const char* name;
};

/// The same file with the same size and time of last change.
bool isUnchanged(const struct ::stat& before, const struct ::stat& after) noexcept;

/// A name for a temporary file that, in all likelihood, nobody else has.
std::string temporaryName();

/// Transfers of entries under one policy. May be used by several threads at once.
class FileTransfer {
public:
    using ReplacementPolicy = foundation::storage::provider::ReplacementPolicy;

    /// With `keepsOwner`, as a move does, the owner is kept as far as the process may.
    explicit FileTransfer(ReplacementPolicy policy, bool keepsOwner = false)
        : policy_(policy), keepsOwner_(keepsOwner) {}

    /// Copies an entry of a kind that is no folder; a link as a link. `bytes` is what was copied.
    Failure copy(EntryAt source, EntryKind kind, EntryAt destination, off_t& bytes);
    /// Copies the file that the name leads to, links followed. What is no regular file is refused: EISDIR for
    /// a folder, EOPNOTSUPP for others.
    Failure copyFollowing(EntryAt source, EntryAt destination, off_t& bytes);
    /// Copies under a temporary name and renames, whatever stands there or not.
    Failure copyAtomically(EntryAt source, EntryKind kind, EntryAt destination);

    /// Moves by renaming, or by copying and removing where that cannot be. The source goes only when its copy
    /// is whole and it is still what was copied; else EBUSY at the source, and both stay.
    Failure move(EntryAt source, EntryKind kind, EntryAt destination);

    /// Whether the policy lets an entry of that kind replace what stands there: 0 when it may or nothing is
    /// there, EEXIST, EACCES, ... Folders, devices, pipes and sockets are never replaced; a link gives way to
    /// a link.
    int mayReplace(EntryAt destination, EntryKind by = EntryKind::file) const;
    bool keepsOwner() const noexcept { return keepsOwner_; }

    CopyAbilities& abilities() noexcept { return abilities_; }

private:
    Failure copyFile(EntryAt source, int openFlags, EntryAt destination, off_t& bytes);
    Failure fill(int source, const struct ::stat& status, FileDescriptor& destination);
    Failure replaceFile(int source, const struct ::stat& status, EntryAt destination);
    Failure copyLink(EntryAt source, EntryAt destination);
    Failure copySpecial(EntryAt source, EntryAt destination);

    const ReplacementPolicy policy_;
    const bool keepsOwner_;
    CopyAbilities abilities_;
};

/// Renames, for a folder only onto nothing: EEXIST when anything stands there. 0 or the errno.
int renameOntoNothing(EntryAt source, EntryAt destination) noexcept;

}  // namespace korvex::runtime::storage::posix
