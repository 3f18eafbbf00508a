// What is done to whole trees: copying, removing, moving entry by entry. (Listing: tree_listing.h.)
//
// All raise `vfs::Exception` at the location of the entry that failed, below the location given for its side.
// All look at the pending-interrupt flag between entries, and tell a progress observer how far they are; but
// of what a move removes nothing is told, for it was told when it was copied.
#pragma once

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/copied_entries.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

/// An open folder and the location under which failures in it are told.
struct OpenTree {
    FileDescriptor folder;
    foundation::storage::vfs::AbsoluteIRI location;
};

/// What the folder is that a tree is copied into: one that was here before, one that was made for the
/// purpose, or one made for the purpose that only its owner can enter and that has a temporary name until it
/// is whole.
enum class CopyInto { standing, made, hidden };

/// Copies what is in `source` into `destination`. A folder that exists there takes in the contents of its
/// counterpart. One that was made for the purpose gets the permission bits and times of `source`. When the
/// copy fails, folders that it has made and not finished get them too, but the owner may enter and write
/// them, so that a second copy can go on. For a move `copied` takes what is copied, and the owner is kept as
/// far as the process may.
void copyTree(OpenTree source, OpenTree destination, CopyInto into,
              foundation::storage::provider::ReplacementPolicy policy, CopiedEntries* copied = nullptr);

/// Why something is removed. The undoing of what has failed is not stopped by an interrupt, which may be what
/// it failed with, gets into every folder of its own, and tells no progress.
enum class Purpose { removal, undoing };

/// Removes what is in the folder, but not the folder.
void removeTreeContents(OpenTree tree, Purpose purpose = Purpose::removal);

/// Removes from `source` what was copied and is as it was then. What is not, since it came or changed after
/// it was copied, stays: `resourceInUse` at its location.
void removeCopiedContents(OpenTree source, const CopiedEntries& copied);

/// Moves what is in `source` into `destination`; folders that do not exist there move as a whole where they
/// can. Between file systems each entry is copied whole before it goes. What remains of `source` is empty,
/// the folder itself stays.
void moveTreeContents(OpenTree source, OpenTree destination,
                      foundation::storage::provider::ReplacementPolicy policy);

}  // namespace korvex::runtime::storage::posix
