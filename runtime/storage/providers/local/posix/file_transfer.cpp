// The transfer of one entry from folder to folder.
#include "runtime/storage/providers/local/posix/file_transfer.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>

#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

namespace {

using foundation::storage::provider::ReplaceAny;

/// Never waits for the other end of a pipe, and never makes a terminal the process's own.
constexpr int readFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr int createFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;

/// Removes an entry that this program made, at the end of a scope, unless it is kept.
class RemovedUnlessKept {
public:
    explicit RemovedUnlessKept(EntryAt entry) : entry_(entry) {
        isKept_ = ::fstatat(entry_.folder, entry_.name, &made_, AT_SYMLINK_NOFOLLOW) != 0;
    }
    ~RemovedUnlessKept() {
        struct ::stat now {};
        if (isKept_ || ::fstatat(entry_.folder, entry_.name, &now, AT_SYMLINK_NOFOLLOW) != 0) return;
        // Somebody may have put something of theirs in its place.
        if (now.st_dev == made_.st_dev && now.st_ino == made_.st_ino)
            ::unlinkat(entry_.folder, entry_.name, 0);
    }
    RemovedUnlessKept(const RemovedUnlessKept&) = delete;
    RemovedUnlessKept& operator=(const RemovedUnlessKept&) = delete;
    void keep() noexcept { isKept_ = true; }

private:
    EntryAt entry_;
    struct ::stat made_ {};
    bool isKept_ = false;
};

/// A name in the folder that holds `entry`, whose own name may have a path in front.
std::string beside(EntryAt entry, const std::string& name) {
    const std::string path = entry.name;
    return path.substr(0, path.rfind('/') + 1) + name;
}

std::string linkTargetOf(EntryAt link) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlinkat(link.folder, link.name, target.data(), target.size());
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return target;
}

/// Renaming one name of a file to another name of the same file does nothing at all: the first one goes here.
int removeOtherName(EntryAt source, EntryAt destination) noexcept {
    struct ::stat from {};
    struct ::stat to {};
    if (::fstatat(source.folder, source.name, &from, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    if (::fstatat(destination.folder, destination.name, &to, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    const bool isSameFile = from.st_dev == to.st_dev && from.st_ino == to.st_ino;
    // With a single name left, both spellings are that name.
    if (!isSameFile || from.st_nlink < 2) return 0;
    return ::unlinkat(source.folder, source.name, 0) == 0 ? 0 : errno;
}

bool isWritableFile(EntryAt entry, const struct ::stat& status) noexcept {
    return (status.st_mode & 0222) != 0 && ::faccessat(entry.folder, entry.name, W_OK, AT_EACCESS) == 0;
}

}  // namespace

bool isUnchanged(const struct ::stat& before, const struct ::stat& after) noexcept {
    return before.st_dev == after.st_dev && before.st_ino == after.st_ino &&
           before.st_size == after.st_size && before.st_mtim.tv_sec == after.st_mtim.tv_sec &&
           before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

std::string temporaryName() {
    // From the system each time: a process that was forked would go on with the numbers of the other one.
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) number = std::random_device{}();
    std::array<char, 32> digits{};
    ::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(number));
    return std::string(".korvex-") + digits.data() + ".part";
}

int renameOntoNothing(EntryAt source, EntryAt destination) noexcept {
    if (::renameat2(source.folder, source.name, destination.folder, destination.name, RENAME_NOREPLACE) ==
        0) {
        return 0;
    }
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // This file system cannot promise it in one step.
    struct ::stat status {};
    if (::fstatat(destination.folder, destination.name, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    return ::renameat(source.folder, source.name, destination.folder, destination.name) == 0 ? 0 : errno;
}

int FileTransfer::mayReplace(EntryAt destination, EntryKind by) const {
    struct ::stat status {};
    if (::fstatat(destination.folder, destination.name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? 0 : errno;
    }
    if (S_ISLNK(status.st_mode)) {
        if (by == EntryKind::link || policy_ == ReplaceAny) return 0;
        // A link is as writable as what it leads to; one that leads nowhere is nothing that may be written.
        if (::fstatat(destination.folder, destination.name, &status, 0) != 0) return EEXIST;
    }
    if (!S_ISREG(status.st_mode)) return EEXIST;
    return policy_ == ReplaceAny || isWritableFile(destination, status) ? 0 : EACCES;
}

Failure FileTransfer::copy(EntryAt source, EntryKind kind, EntryAt destination, off_t& bytes) {
    bytes = 0;
    switch (kind) {
        case EntryKind::folder: return {EISDIR, sourceSide};
        case EntryKind::link: return copyLink(source, destination);
        case EntryKind::special: return copySpecial(source, destination);
        case EntryKind::file: break;
    }
    return copyFile(source, readFlags | O_NOFOLLOW, destination, bytes);
}

Failure FileTransfer::copyFollowing(EntryAt source, EntryAt destination, off_t& bytes) {
    return copyFile(source, readFlags, destination, bytes);
}

Failure FileTransfer::copyFile(EntryAt source, int openFlags, EntryAt destination, off_t& bytes) {
    const FileDescriptor input(::openat(source.folder, source.name, openFlags));
    if (!input) return {errno, sourceSide};
    struct ::stat status {};
    if (::fstat(input.get(), &status) != 0) return {errno, sourceSide};
    if (S_ISDIR(status.st_mode)) return {EISDIR, sourceSide};
    if (!S_ISREG(status.st_mode)) return {EOPNOTSUPP, sourceSide};
    bytes = status.st_size;

    // Nobody else reads or writes it before it has its own permission bits.
    FileDescriptor output(::openat(destination.folder, destination.name, createFlags, 0600));
    if (!output && errno == EEXIST) return replaceFile(input.get(), status, destination);
    if (!output) return {errno, destinationSide};
    RemovedUnlessKept created(destination);
    if (const Failure failure = fill(input.get(), status, output)) return failure;
    created.keep();
    return {};
}

/// Content and attributes, to the point where the storage has confirmed them.
Failure FileTransfer::fill(int source, const struct ::stat& status, FileDescriptor& destination) {
    if (const Failure failure = copyContent(source, status, destination.get(), abilities_)) return failure;
    if (const Failure failure = copyExtendedAttributes(source, destination.get(), abilities_)) return failure;
    if (const int systemError = copyModeAndTimes(status, destination.get(), keepsOwner_)) {
        return {systemError, destinationSide};
    }
    return {destination.close(), destinationSide};
}

Failure FileTransfer::replaceFile(int source, const struct ::stat& status, EntryAt destination) {
    if (const int systemError = mayReplace(destination)) return {systemError, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    FileDescriptor output(::openat(destination.folder, temporary.c_str(), createFlags, 0600));
    if (!output) return {errno, destinationSide};
    RemovedUnlessKept written({destination.folder, temporary.c_str()});
    if (const Failure failure = fill(source, status, output)) return failure;
    if (::renameat(destination.folder, temporary.c_str(), destination.folder, destination.name) != 0) {
        return {errno == EISDIR || errno == ENOTEMPTY ? EEXIST : errno, destinationSide};
    }
    written.keep();
    return {};
}

Failure FileTransfer::copyLink(EntryAt source, EntryAt destination) {
    struct ::stat status {};
    const std::string target = linkTargetOf(source);
    if (target.empty() || ::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return {errno, sourceSide};
    }
    const struct timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
    if (::symlinkat(target.c_str(), destination.folder, destination.name) == 0) {
        ::utimensat(destination.folder, destination.name, times, AT_SYMLINK_NOFOLLOW);
        return {};
    }
    if (errno != EEXIST) return {errno, destinationSide};
    if (const int systemError = mayReplace(destination, EntryKind::link))
        return {systemError, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    if (::symlinkat(target.c_str(), destination.folder, temporary.c_str()) != 0)
        return {errno, destinationSide};
    RemovedUnlessKept written({destination.folder, temporary.c_str()});
    ::utimensat(destination.folder, temporary.c_str(), times, AT_SYMLINK_NOFOLLOW);
    if (::renameat(destination.folder, temporary.c_str(), destination.folder, destination.name) != 0) {
        return {errno, destinationSide};
    }
    written.keep();
    return {};
}

Failure FileTransfer::copySpecial(EntryAt source, EntryAt destination) {
    struct ::stat status {};
    if (::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    if (S_ISSOCK(status.st_mode)) return {EOPNOTSUPP, sourceSide};
    if (::mknodat(destination.folder, destination.name, status.st_mode, status.st_rdev) != 0) {
        return {errno, destinationSide};
    }
    ::fchmodat(destination.folder, destination.name, status.st_mode & 0777, AT_SYMLINK_NOFOLLOW);
    const struct timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
    ::utimensat(destination.folder, destination.name, times, AT_SYMLINK_NOFOLLOW);
    return {};
}

Failure FileTransfer::copyAtomically(EntryAt source, EntryKind kind, EntryAt destination) {
    if (const int systemError = mayReplace(destination, kind)) return {systemError, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    const EntryAt written{destination.folder, temporary.c_str()};
    off_t bytes = 0;
    if (const Failure failure = copy(source, kind, written, bytes)) return failure;
    RemovedUnlessKept removed(written);
    if (::renameat(written.folder, written.name, destination.folder, destination.name) != 0) {
        return {errno == EISDIR ? EEXIST : errno, destinationSide};
    }
    removed.keep();
    return {};
}

Failure FileTransfer::move(EntryAt source, EntryKind kind, EntryAt destination) {
    if (const int systemError = mayReplace(destination, kind)) return {systemError, destinationSide};
    struct ::stat before {};
    struct ::stat after {};
    if (::fstatat(source.folder, source.name, &before, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    if (::renameat(source.folder, source.name, destination.folder, destination.name) == 0) {
        return {removeOtherName(source, destination), sourceSide};
    }
    if (errno != EXDEV) return {errno == EISDIR ? EEXIST : errno, destinationSide};
    if (const Failure failure = copyAtomically(source, kind, destination)) return failure;
    if (::fstatat(source.folder, source.name, &after, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    if (!isUnchanged(before, after)) return {EBUSY, sourceSide};
    return {::unlinkat(source.folder, source.name, 0) == 0 ? 0 : errno, sourceSide};
}

}  // namespace korvex::runtime::storage::posix
