// What the interpreter knows of the folders in which it looks for functions: the names of source files and of
// special subfolders, read once and kept until somebody says that the folder has changed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/storage_vfs.h"

namespace korvex::runtime::dispatcher {

/// Names in the order of their 16-bit units.
struct FolderView {
    std::vector<std::u16string> sourceFiles;
    /// "@name", "+name", "private", "resources".
    std::vector<std::u16string> specialSubfolders;
};

/// The kept view, or one that is read now. A folder that cannot be listed has an empty view, and is asked
/// again the next time. Never null.
std::shared_ptr<const FolderView> folderView(const foundation::storage::vfs::CanonicalAbsoluteIRI& folder);

/// Forgets the view of one folder, however the location names it; it need not be there any more.
void forgetFolderView(const foundation::storage::vfs::AbsoluteIRI& folder);

/// A special subfolder may have come or gone with this location: forgets the views of the folders above it.
void forgetFolderViewsAbove(const foundation::storage::vfs::AbsoluteIRI& location);

/// Forgets all of them: each is read again when it is asked for.
void forgetFolderViews();

}  // namespace korvex::runtime::dispatcher
