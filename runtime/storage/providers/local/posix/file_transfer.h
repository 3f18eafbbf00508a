// The transfer of one entry from folder to folder: a file, a link, a pipe.
//
// A new file of at most one page is made in place, exclusively, and written with one call: a kill leaves it
// whole, empty or not there. In a tree that is hidden until it is whole every new file is made in place.
// Elsewhere one that takes more than a page has no name until it is whole, where the file system can do so.
// Where it cannot, and where another file is to be replaced, it is written under a temporary name beside its
// own and renamed when it is whole. What a failed copy has made is removed again.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/created_file.h"
#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_content.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"
#include "runtime/storage/providers/local/posix/open_for_reading.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"

namespace korvex::runtime::storage::posix {

/// What is known of the folder that an entry goes into, so that it need not be asked for each.
struct DestinationFolder {
    /// Made for this copy: nothing stands in it but what came from here.
    bool isNew = false;
    /// It lies in a tree that has a temporary name until all of it is whole.
    bool isHidden = false;
    /// The disk of a hidden tree.
    dev_t device = 0;
    /// Its new entries get access lists from it.
    bool handsAccessListsOn = true;
};

/// Transfers of entries under one policy. May be used by several threads at once.
class FileTransfer {
public:
    using ReplacementPolicy = foundation::storage::provider::ReplacementPolicy;

    /// With `keepsOwner`, as a move does, the owner of the source is kept as far as the process may. Without,
    /// a new file is the process's own, and one that is replaced keeps its owner as far as the process may.
    explicit FileTransfer(ReplacementPolicy policy, bool keepsOwner = false)
        : policy_(policy), keepsOwner_(keepsOwner) {}

    /// Copies an entry of a kind that is no folder; a link as a link. `watcher` may be null, as for all.
    Failure copy(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher,
                 const DestinationFolder& into = {});
    /// Copies the file that the name leads to, links followed, on both sides. What is no regular file is
    /// refused and not even opened: EISDIR for a folder, EOPNOTSUPP for others.
    Failure copyFollowing(EntryAt source, EntryAt destination, CopyWatcher* watcher);

    /// Copies a plain file of at most that size to where nothing stands, no link either. EFBIG for a larger
    /// one and for one that needs a temporary name; EEXIST, and whatever else keeps it from being made in
    /// this way. `made` is then the status of the copy.
    Failure copyOntoNothing(EntryAt source, EntryAt destination, off_t mostBytes, struct ::stat& made);

    /// Moves by renaming, or by copying and removing where that cannot be. The source goes only when its copy
    /// is whole and has reached the storage, and when it is still what was copied; else EBUSY at the source,
    /// and both stay. Of two names of one file, the first one goes; an entry moved onto itself stays.
    Failure move(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher);

    /// Whether the policy lets an entry of that kind replace what stands there: 0 when it may or nothing is
    /// there, EEXIST, EACCES, EROFS, ... Folders, devices, pipes and sockets are never replaced, nor links to
    /// one; a link gives way to a link.
    int mayReplace(EntryAt destination, EntryKind by = EntryKind::file) const;

    /// Puts what was written under its own name beside the destination in its place: 0 or the errno. Replaces
    /// nothing that came meanwhile and that the policy does not let it replace; with `isReplacing` something
    /// is known to stand there.
    int rename(EntryAt written, EntryKind kind, EntryAt destination, bool isReplacing) const;

    /// Gives a folder the attributes, permission bits and time of its source, whose status is given. With
    /// `hasInherited` it may have an access list from the folder above it, which goes.
    Failure dress(int source, const struct ::stat& status, int destination, bool hasInherited = true);

private:
    struct SourceFile;
    struct Standing;
    /// Whether a copied file has to have reached the storage before it gets its name.
    enum class Durability { whenever, atOnce };

    Failure open(EntryAt source, Links links, SourceFile& opened, Lease lease = Lease::isAwaited) const;
    void askWhatItTells(SourceFile& opened);
    static bool isWrittenAtOnce(const SourceFile& source) noexcept;
    Failure copyOpened(SourceFile& source, EntryAt destination, Links links, CopyWatcher* watcher) const;
    Failure copyInPlace(const SourceFile& source, EntryAt destination, CopyWatcher* watcher) const;
    Failure fillInPlace(const SourceFile& source, CreatedFile& output, const struct ::stat* owner,
                        CopyWatcher* watcher) const;
    std::optional<struct ::stat> expectedOf(const SourceFile& source, mode_t bits) const;
    Failure copyBeside(const SourceFile& source, EntryAt destination, Links links, Durability durability,
                       CopyWatcher* watcher) const;
    std::optional<Failure> copyUnnamed(const SourceFile& source, EntryAt destination, Durability durability,
                                       CopyWatcher* watcher) const;
    int replaceByUnnamed(const UnnamedFile& file, EntryAt destination) const;
    Failure copyAndRemove(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher);
    Failure copyDurably(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher);
    Failure copyLink(EntryAt source, EntryAt destination) const;
    Failure copySpecial(EntryAt source, EntryAt destination) const;
    Failure replaceBy(EntryAt written, EntryKind kind, EntryAt destination) const;

    int lookAt(EntryAt destination, EntryKind by, Standing& standing) const;
    int makeLink(const std::string& target, const struct ::stat& status, EntryAt link) const;
    void keepOwnerAndTime(const struct ::stat& source, EntryAt made) const;
    const struct ::stat* ownerOf(const SourceFile& source, const Standing& standing) const noexcept;
    static mode_t modeAtCreation(const SourceFile& source, const struct ::stat* owner) noexcept;
    static Failure fill(const SourceFile& source, int file, struct ::stat made, const struct ::stat* owner,
                        CopyWatcher* watcher);

    const ReplacementPolicy policy_;
    const bool keepsOwner_;
    AbilitiesOfDevices abilities_;
    /// The permission bits that new files have been seen to get when they were asked for. Others the
    /// process's mask may take away.
    mutable std::atomic<mode_t> grantedBits_{0};
    /// Whether the destination's file system has files without a name, as far as it has been tried.
    mutable std::atomic<bool> makesUnnamed_{true};
};

}  // namespace korvex::runtime::storage::posix
