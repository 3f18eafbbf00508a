// The removing part of moves between two providers: what was copied goes, as far as it is as it was then.
#pragma once

#include "runtime/storage/transfer_copies.h"

namespace korvex::runtime::storage {

/// Raises `vfs::Exception`: `resourceInUse` for a file that has changed, and for what is no file any more.
void removeCopiedFile(const ServedLocation& file, const CopiedFile& copied);

/// Removes the files that were copied, and the folders that are empty then. Looks at every folder anew, and
/// works only in what is a folder itself. What has gone by itself is no matter; what has changed or come
/// meanwhile stays, and raises `resourceInUse` where it stands.
void removeCopiedTree(const ServedLocation& folder, const CopiedItems& copied);

}  // namespace korvex::runtime::storage
