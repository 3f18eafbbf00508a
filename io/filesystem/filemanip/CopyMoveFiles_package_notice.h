// Whether an operation changes the contents of an installed package behind its back, and what to tell the
// user then. The commands make the warning; each has messages of its own.
#pragma once

#include <boost/optional.hpp>
#include <string>

#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// Which end of an operation the item is.
enum class PackageNoticeMode {
    intoPackage = 0,  ///< an item at its new place
    fromPackage = 1,  ///< an item at its old place; ask before it is gone
};

/// The two arguments of a notice about a file: which place, and the name of the package.
struct FilePackageNotice {
    std::u16string itemText;
    std::u16string packageName;
};

struct FolderPackageNotice {
    std::u16string itemText;
    std::u16string packageName;
    bool editable;
};

/// None while the package manager is off and where no package claims the file's folder. In an editable
/// package only its definition file, and only at its old place, gives a notice. Raises what the package
/// registry and the storage raise.
boost::optional<FilePackageNotice> noticeFileInPackage(const foundation::storage::vfs::File& file,
                                                       PackageNoticeMode mode);

/// The same for a folder; asked about is the folder itself at its old place, its parent at its new one. In an
/// editable package only ordinary folders give a notice, but a folder of resources right below the package's
/// root counts as in a package that is not editable.
boost::optional<FolderPackageNotice> noticeFolderInPackage(const foundation::storage::vfs::Folder& folder,
                                                           PackageNoticeMode mode);

/// Whether there may be a notice about files of this folder. False is an answer for all of them, so that a
/// long listing need not ask for each.
bool mayGiveNotices(const foundation::storage::vfs::Folder& folder);

}  // namespace korvex::filemanip
