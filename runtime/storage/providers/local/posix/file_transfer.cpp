// The transfer of one entry from folder to folder.
#include "runtime/storage/providers/local/posix/file_transfer.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <random>

#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

namespace {

using foundation::storage::provider::ReplaceAny;

/// Never waits for the other end of a pipe, and never makes a terminal the process's own.
constexpr int readFlags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr int createFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;

/// Removes an entry at the end of a scope, unless it is kept.
class RemovedUnlessKept {
public:
    explicit RemovedUnlessKept(EntryAt entry) : entry_(entry) {}
    ~RemovedUnlessKept() {
        if (!isKept_) ::unlinkat(entry_.folder, entry_.name, 0);
    }
    RemovedUnlessKept(const RemovedUnlessKept&) = delete;
    RemovedUnlessKept& operator=(const RemovedUnlessKept&) = delete;
    void keep() noexcept { isKept_ = true; }

private:
    EntryAt entry_;
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

bool isWritableFile(EntryAt entry, const struct ::stat& status) noexcept {
    return (status.st_mode & 0222) != 0 && ::faccessat(entry.folder, entry.name, W_OK, AT_EACCESS) == 0;
}

}  // namespace

std::string temporaryName() {
    static std::atomic<std::uint64_t> counter{std::random_device{}() |
                                              (std::uint64_t{std::random_device{}()} << 32)};
    std::array<char, 32> digits{};
    // Odd multiples keep names apart that are made one after the other.
    const std::uint64_t number = counter.fetch_add(0x9E3779B97F4A7C15U, std::memory_order_relaxed);
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

int FileTransfer::mayReplace(EntryAt destination) const {
    struct ::stat status {};
    if (::fstatat(destination.folder, destination.name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno == ENOENT ? 0 : errno;
    }
    if (S_ISDIR(status.st_mode)) return EEXIST;
    if (policy_ == ReplaceAny) return 0;
    // A link is as writable as what it leads to; one that leads nowhere is nothing that may be written.
    const bool isLink = S_ISLNK(status.st_mode);
    if (isLink && ::fstatat(destination.folder, destination.name, &status, 0) != 0) return EEXIST;
    if (S_ISDIR(status.st_mode)) return EEXIST;
    return isWritableFile(destination, status) ? 0 : EACCES;
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

    const FileDescriptor output(
        ::openat(destination.folder, destination.name, createFlags, status.st_mode & 0777));
    if (!output && errno == EEXIST) return replaceFile(input.get(), status, destination);
    if (!output) return {errno, destinationSide};
    RemovedUnlessKept created(destination);
    if (const Failure failure = fill(input.get(), status, output.get())) return failure;
    created.keep();
    return {};
}

/// Content and attributes. Which side failed cannot be told from a copy inside of the kernel; reading fails
/// so rarely that the destination is named.
Failure FileTransfer::fill(int source, const struct ::stat& status, int destination) {
    if (const int systemError = copyContent(source, status, destination, abilities_)) {
        return {systemError, destinationSide};
    }
    if (const int systemError = copyExtendedAttributes(source, destination, abilities_)) {
        return {systemError, destinationSide};
    }
    const bool isModeSet = (status.st_mode & 07777 & (modeMask_ | 07000)) == 0;
    return {copyModeAndTimes(status, destination, isModeSet), destinationSide};
}

Failure FileTransfer::replaceFile(int source, const struct ::stat& status, EntryAt destination) {
    if (const int systemError = mayReplace(destination)) return {systemError, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    const FileDescriptor output(
        ::openat(destination.folder, temporary.c_str(), createFlags, status.st_mode & 0777));
    if (!output) return {errno, destinationSide};
    RemovedUnlessKept written({destination.folder, temporary.c_str()});
    if (const Failure failure = fill(source, status, output.get())) return failure;
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
    if (const int systemError = mayReplace(destination)) return {systemError, destinationSide};
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
    ::fchmodat(destination.folder, destination.name, status.st_mode & 07777, 0);
    const struct timespec times[2] = {{0, UTIME_OMIT}, status.st_mtim};
    ::utimensat(destination.folder, destination.name, times, AT_SYMLINK_NOFOLLOW);
    return {};
}

Failure FileTransfer::copyAtomically(EntryAt source, EntryKind kind, EntryAt destination) {
    if (const int systemError = mayReplace(destination)) return {systemError, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    const EntryAt written{destination.folder, temporary.c_str()};
    off_t bytes = 0;
    if (const Failure failure = copy(source, kind, written, bytes)) return failure;
    if (::renameat(written.folder, written.name, destination.folder, destination.name) == 0) return {};
    const int systemError = errno;
    ::unlinkat(written.folder, written.name, 0);
    return {systemError == EISDIR ? EEXIST : systemError, destinationSide};
}

}  // namespace korvex::runtime::storage::posix
