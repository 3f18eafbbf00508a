// What is done to whole trees: copying, removing, moving entry by entry. (Listing: tree_listing.h.)
//
// All raise `vfs::Exception` at the location of the entry that failed, below the location given for its side.
// All look at the pending-interrupt flag between files, and tell a progress observer how far they are.
#pragma once

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

/// An open folder and the location under which failures in it are told.
struct OpenTree {
    FileDescriptor folder;
    foundation::storage::vfs::AbsoluteIRI location;
};

/// Copies what is in `source` into `destination`. A folder that exists there takes in the contents of its
/// counterpart. `isNew` tells that `destination` was made for the purpose: it then gets the permission bits
/// and times of `source`.
void copyTree(OpenTree source, OpenTree destination, bool isNew,
              foundation::storage::provider::ReplacementPolicy policy, bool keepsOwner = false);

/// Whether a pending interrupt stops a removal. The undoing of something that was interrupted must not be.
enum class Interrupts { stop, wait };

/// Removes what is in the folder, but not the folder.
void removeTreeContents(OpenTree tree, Interrupts interrupts = Interrupts::stop);

/// Removes from `source` what stands in `copy` with the same size and time of last change. What does not,
/// since it came or changed after it was copied, stays: `resourceInUse` at its location.
void removeCopiedContents(OpenTree source, OpenTree copy);

/// Moves what is in `source` into `destination`; folders that do not exist there move as a whole where they
/// can. Between file systems each entry is copied whole before it goes. What remains of `source` is empty,
/// the folder itself stays.
void moveTreeContents(OpenTree source, OpenTree destination,
                      foundation::storage::provider::ReplacementPolicy policy);

}  // namespace korvex::runtime::storage::posix
