// A folder that is filled under a temporary name.
#include "runtime/storage/providers/local/posix/hidden_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <utility>

#include "runtime/storage/providers/local/posix/tree_operations.h"

namespace korvex::runtime::storage::posix {

HiddenFolder::HiddenFolder(const Place& place, foundation::storage::vfs::AbsoluteIRI location)
    : location_(std::move(location)),
      name_(place.lastComponent()),
      hiddenName_(temporaryName()),
      systemError_(make(place)) {}

HiddenFolder::~HiddenFolder() {
    if (isPublished_ || !folder_) return;
    try {
        remove();
    } catch (const std::exception&) {
        // What cannot be removed stays under its temporary name.
    }
}

int HiddenFolder::make(const Place& place) {
    const std::string folder = beside(place.entry(), ".");
    above_ = FileDescriptor(::openat(place.folder(), folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!above_) return errno;
    int systemError = 0;
    folder_ = makeOwnFolder({above_.get(), hiddenName_.c_str()}, systemError);
    return systemError;
}

int HiddenFolder::publish() noexcept {
    const int systemError =
        renameOntoNothing({above_.get(), hiddenName_.c_str()}, {above_.get(), name_.c_str()});
    isPublished_ = systemError == 0;
    return systemError;
}

void HiddenFolder::remove() {
    struct ::stat made {};
    if (::fstat(folder_.get(), &made) != 0) return;
    ::fchmod(folder_.get(), S_IRWXU);
    removeTreeContents({std::move(folder_), location_}, Purpose::undoing);
    struct ::stat standing {};
    const bool isThere = ::fstatat(above_.get(), hiddenName_.c_str(), &standing, AT_SYMLINK_NOFOLLOW) == 0;
    if (isThere && isSameFile(standing, made)) ::unlinkat(above_.get(), hiddenName_.c_str(), AT_REMOVEDIR);
}

FileDescriptor makeOwnFolder(EntryAt entry, int& systemError) noexcept {
    systemError = ::mkdirat(entry.folder, entry.name, S_IRWXU) == 0 ? 0 : errno;
    if (systemError != 0) return FileDescriptor();
    // In its place a link is somebody's trap.
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    FileDescriptor folder(::openat(entry.folder, entry.name, flags));
    // The mask may have taken the owner's bits away. What the folder above hands on, such as its group,
    // stays.
    struct ::stat made {};
    const bool isShut =
        !folder && errno == EACCES && ::fstatat(entry.folder, entry.name, &made, AT_SYMLINK_NOFOLLOW) == 0;
    const auto ownBits = [&made] { return (made.st_mode & 07777) | S_IRWXU; };
    if (isShut && ::fchmodat(entry.folder, entry.name, ownBits(), AT_SYMLINK_NOFOLLOW) == 0)
        folder = FileDescriptor(::openat(entry.folder, entry.name, flags));
    if (folder && ::fstat(folder.get(), &made) == 0) {
        if ((made.st_mode & S_IRWXU) != S_IRWXU) ::fchmod(folder.get(), ownBits());
        return folder;
    }
    systemError = errno == ENOTDIR || errno == ELOOP ? EEXIST : errno;
    ::unlinkat(entry.folder, entry.name, AT_REMOVEDIR);
    return folder;
}

}  // namespace korvex::runtime::storage::posix
