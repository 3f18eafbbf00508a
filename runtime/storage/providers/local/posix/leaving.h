// Why an entry cannot be taken out of the folder that holds it.
#pragma once

#include "runtime/storage/providers/local/posix/file_transfer.h"

namespace korvex::runtime::storage::posix {

/// 0 when nothing speaks against it, or the errno with which its renaming or removal would fail: ENOENT,
/// EACCES, EROFS, EPERM for what is guarded by its folder's sticky bit or marked as not to be changed, EBUSY
/// for a place where something is mounted. A folder that may not be written counts as one that cannot leave.
int obstacleToLeaving(EntryAt entry);

/// Whether something is mounted at an open folder: what is in it belongs to another tree, and the folder
/// cannot go. False where the system does not say.
bool isMountPoint(int folder) noexcept;
/// The same for an entry of any kind; a link stands for itself.
bool isMountPoint(EntryAt entry) noexcept;

/// The side at which a failed renaming is to be told: the system does not say which of the two names it
/// means.
Side sideOfFailedRenaming(EntryAt source, int systemError);

}  // namespace korvex::runtime::storage::posix
