// One entry to act on, named relative to a folder. Works for paths of any length.
#pragma once

#include <memory>
#include <string>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/found_folder.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"

namespace korvex::runtime::storage::posix {

class Place {
public:
    /// The entry of a local location. Raises `vfs::Exception`: `invalidLocation` for what no name on this
    /// disk can read as, and what opening the folder above meets when the path is long.
    explicit Place(const foundation::storage::vfs::AbsoluteIRI& location);
    /// The same without an exception for a folder that is gone: `systemError` is 0 or the errno then.
    Place(const foundation::storage::vfs::AbsoluteIRI& location, int& systemError);
    /// An entry with this name in the folder that holds `other`. The other place must live as long.
    Place(const Place& other, const std::string& name);

    /// For the system's calls that take a folder and a name.
    int folder() const noexcept { return folder_; }
    const char* name() const noexcept { return name_.c_str(); }
    EntryAt entry() const noexcept { return {folder_, name_.c_str()}; }
    /// Without the path in front.
    std::string lastComponent() const;
    /// Named by what a listing gave, relative to the folder that was listed.
    bool isFound() const noexcept { return found_ != nullptr; }
    /// Found in what is mounted inside the tree that was listed.
    bool isMountedInTree() const noexcept { return found_ && found_->isMountedInTree(); }

private:
    std::shared_ptr<const FoundFolder> found_;
    FileDescriptor opened_;
    FolderTree::Handle held_;
    int folder_;
    std::string name_;
};

/// The bytes of the path. Raises `vfs::Exception` with `invalidLocation` when no name on this disk can read
/// so.
std::string nativePathOf(const foundation::storage::vfs::AbsoluteIRI& location);
/// The same without an exception: false, with `bytes` in an unspecified state.
bool nativePathOf(const foundation::storage::vfs::AbsoluteIRI& location, std::string& bytes);

/// What stands at a location: of an entry that a listing gave, in the folder in which it was found. False
/// when nothing is there, or no name on this disk can read so. Raises `vfs::Exception` with that context when
/// the system cannot tell.
bool lookUp(const foundation::storage::vfs::AbsoluteIRI& location, Links links, struct ::stat& status,
            const char16_t* context);

/// Where a file is written that is sent onto a link to a file: what the link leads to is replaced, not the
/// link. Of any other location, the location itself.
foundation::storage::vfs::AbsoluteIRI behindLink(const foundation::storage::vfs::AbsoluteIRI& location);

}  // namespace korvex::runtime::storage::posix
