// From a failure on a walk to the exception that tells it, at the location where it happened, and what
// becomes of the folders that were under way.
#pragma once

#include <string>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"
#include "runtime/storage/providers/local/posix/tree_walk.h"

namespace korvex::runtime::storage::posix {

/// The location of `path` (bytes, "/" between names) below `top`.
foundation::storage::vfs::AbsoluteIRI locationBelow(const foundation::storage::vfs::AbsoluteIRI& top,
                                                    const std::string& path);

/// The location of an entry of a folder of the tree.
foundation::storage::vfs::AbsoluteIRI locationIn(const foundation::storage::vfs::AbsoluteIRI& top,
                                                 const TreeFolder& folder, const std::string& name);

/// Runs a walk and turns its `WalkFailure` into a `vfs::Exception`.
void runWalk(TreeWalk& walk, std::shared_ptr<TreeFolder> top,
             const foundation::storage::vfs::AbsoluteIRI& source,
             const foundation::storage::vfs::AbsoluteIRI& destination, const char16_t* context);

/// The top folder of a walk with its sides adopted. Raises `vfs::Exception`.
std::shared_ptr<TreeFolder> makeTop(TreeWalk& walk, FileDescriptor source,
                                    const foundation::storage::vfs::AbsoluteIRI& sourceLocation);

/// Gives a new folder that will not be filled any more the attributes of its source. Its owner may enter and
/// write it all the same, so that somebody can go on with it.
void dressAbandoned(FolderTree& tree, FileTransfer& transfer, TreeFolder& folder) noexcept;

}  // namespace korvex::runtime::storage::posix
