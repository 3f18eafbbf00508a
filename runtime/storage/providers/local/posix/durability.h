// Having what was written reach the storage, so that it outlives a loss of power.
//
// All give 0 or the errno, and 0 also where a file system has no such thing.
#pragma once

#include <string>

namespace korvex::runtime::storage::posix {

/// Content and attributes of an open file or folder; of a folder, the names in it.
int syncFile(int file) noexcept;

/// The names in the folder that holds `name`, which is relative to an open folder (or AT_FDCWD).
int syncFolderOf(int folder, const std::string& name);

/// Everything written so far to the file system of an open file or folder. For a tree this is one wait
/// instead of one for each file.
int syncFileSystem(int file) noexcept;

/// Everything written so far to any file system: for what may be written and not opened for reading.
int syncAll() noexcept;

}  // namespace korvex::runtime::storage::posix
