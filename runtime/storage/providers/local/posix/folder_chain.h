// A folder with all folders above it that are missing.
#pragma once

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage::posix {

/// Makes the folder and what is missing above it, from the top down, each relative to the open folder before
/// it: the cost grows with the number of folders, whatever the length of the path. Raises `vfs::Exception`:
/// `resourceAlreadyExists` with the location that stood in the way, and what the system says of the folder
/// that could not be made. Folders made before a failure stay.
void createFolderChain(const foundation::storage::vfs::AbsoluteIRI& folder);

}  // namespace korvex::runtime::storage::posix
