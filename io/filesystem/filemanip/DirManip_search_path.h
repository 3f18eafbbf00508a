// What the interpreter is told when folders and source files have gone: its search path, and its cache of
// functions.
#pragma once

#include <vector>

#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// Drops the cached functions of a removed source file (".k", ".klx", case ignored). Other files, and files
/// that are not local, change nothing.
void clearKFunction(const foundation::storage::vfs::AbsoluteIRI& location);

/// Takes one removed folder off the search path, with the warning "KORVEX:RMDIR:RemovedFromPath" when it was
/// on it, and tells the entries above it.
void updateWindowsPath(const foundation::storage::vfs::AbsoluteIRI& location);

/// After a whole command that succeeded. Nothing is left to do: the folders have left the path one by one.
void updateUnixPath(const std::vector<foundation::storage::vfs::AbsoluteIRI>& removedFolders);

/// Takes a folder and all entries below it off the search path, and gives those entries back in the path's
/// order. `warn` warns of each with "KORVEX:RMDIR:RemovedFromPath", whichever command called.
std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI> removeFolderTreeFromPath(
    const foundation::storage::vfs::AbsoluteIRI& root, bool warn);

}  // namespace korvex::filemanip
