// A folder that is filled under a temporary name beside the one that it is to have: what a process that is
// killed leaves of it nobody takes for the whole.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/storage_vfs.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/place.h"

namespace korvex::runtime::storage::posix {

/// Goes again at the end of a scope, with what is in it, unless it was published. All by open handles:
/// nothing that somebody puts under one of its names or in their paths is touched.
class HiddenFolder {
public:
    /// Makes it, for its owner alone, in the folder that holds `place`. `location` tells of it.
    HiddenFolder(const Place& place, foundation::storage::vfs::AbsoluteIRI location);
    ~HiddenFolder();
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;

    /// 0 or the errno with which it could not be made.
    int systemError() const noexcept { return systemError_; }
    int handle() const noexcept { return folder_.get(); }
    /// Gives it its name: 0 or the errno, EEXIST when anything stands there. It stays hidden then.
    int publish() noexcept;

private:
    int make(const Place& place);
    void remove();

    const foundation::storage::vfs::AbsoluteIRI location_;
    const std::string name_;
    const std::string hiddenName_;
    FileDescriptor above_;
    FileDescriptor folder_;
    int systemError_;
    bool isPublished_ = false;
};

/// Makes a folder that only its owner may enter, whatever the process's mask is, and opens it. No folder and
/// the errno when it cannot be had; nothing is left of it then.
FileDescriptor makeOwnFolder(EntryAt entry, int& systemError) noexcept;

}  // namespace korvex::runtime::storage::posix
