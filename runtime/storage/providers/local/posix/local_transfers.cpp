// The local provider on POSIX systems: copying and moving.
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::EntryAt;
using posix::EntryKind;
using posix::Failure;
using posix::FileDescriptor;
using posix::FileTransfer;
using posix::OpenTree;
using posix::Place;
using posix::raiseSystemError;

namespace {

constexpr const char16_t* copying = u"copying";
constexpr const char16_t* moving = u"moving";

EntryAt entryAt(const Place& place) noexcept { return {place.folder(), place.name()}; }

void raiseIfFailed(const Failure& failure, const AbsoluteIRI& source, const AbsoluteIRI& destination,
                   const char16_t* context) {
    if (!failure) return;
    raiseSystemError(failure.systemError, failure.side == posix::sourceSide ? source : destination, context);
}

bool statusAt(const Place& place, int flags, struct ::stat& status) noexcept {
    return ::fstatat(place.folder(), place.name(), &status, flags) == 0;
}

FileDescriptor openForReading(const Place& place, int flags, const AbsoluteIRI& location,
                              const char16_t* context) {
    FileDescriptor folder(::openat(place.folder(), place.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
    if (!folder) raiseSystemError(errno, location, context);
    return folder;
}

/// A folder may not go into its own subtree: the copy would find itself on the way.
void refuseOwnSubtree(LocalProvider& local, const AbsoluteIRI& source, const AbsoluteIRI& destination,
                      const char16_t* context) {
    const CanonicalAbsoluteIRI from = local.canonicalLocation(source);
    const bool isThere = local.existence(destination) != provider::AsNeither;
    const AbsoluteIRI existing = isThere || !destination.hasParent() ? destination : destination.getParent();
    if (local.existence(existing) == provider::AsNeither) return;  // said in its place, with the right code
    const CanonicalAbsoluteIRI to = local.canonicalLocation(existing);
    if (from.isAncestorOf(to) || from == to) throw vfs::Exception(vfs::invalidLocation, destination, context);
}

/// The folder at the destination, made now or taken as it is.
struct DestinationFolder {
    FileDescriptor folder;
    bool isNew;
};

DestinationFolder openDestination(const Place& place, const AbsoluteIRI& location, ReplacementPolicy policy) {
    const bool isNew = ::mkdirat(place.folder(), place.name(), 0700) == 0;
    if (!isNew && (errno != EEXIST || policy == provider::ReplaceWritable)) {
        raiseSystemError(errno, location, copying);
    }
    // The folder that was named may be reached through a link; those below it may not.
    FileDescriptor folder(::openat(place.folder(), place.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) raiseSystemError(errno == ENOTDIR || errno == ELOOP ? EEXIST : errno, location, copying);
    return {std::move(folder), isNew};
}

/// Where a failed renaming is to be told: the system does not say which of the two names it means.
const AbsoluteIRI& renameFailedAt(const Place& from, const AbsoluteIRI& source,
                                  const AbsoluteIRI& destination, int systemError) {
    struct ::stat status {};
    if (!statusAt(from, AT_SYMLINK_NOFOLLOW, status)) return source;
    const bool isRefused = systemError == EACCES || systemError == EPERM;
    const Place above(from, ".");
    const bool mayLeave = ::faccessat(above.folder(), above.name(), W_OK, AT_EACCESS) == 0;
    return isRefused && !mayLeave ? source : destination;
}

[[noreturn]] void raiseRenameFailure(int systemError, const Place& from, const AbsoluteIRI& source,
                                     const AbsoluteIRI& destination) {
    raiseSystemError(systemError == EISDIR ? EEXIST : systemError,
                     renameFailedAt(from, source, destination, systemError), moving);
}

/// Removes what was made on the way to something that failed; what went wrong first is what is told.
void undo(const Place& folder, const AbsoluteIRI& location) noexcept {
    try {
        posix::removeTreeContents({openForReading(folder, O_NOFOLLOW, location, moving), location},
                                  posix::Interrupts::wait);
        ::unlinkat(folder.folder(), folder.name(), AT_REMOVEDIR);
    } catch (const std::exception&) {
        // What cannot be removed stays under its temporary name.
    }
}

/// Between file systems: the tree is copied under a temporary name, renamed, and only then removed at its
/// source.
void moveFolderByCopying(const AbsoluteIRI& source, const Place& from, const AbsoluteIRI& destination,
                         const Place& to, ReplacementPolicy policy) {
    const Place staging(to, posix::temporaryName());
    if (::mkdirat(staging.folder(), staging.name(), 0700) != 0) raiseSystemError(errno, destination, moving);
    try {
        posix::copyTree({openForReading(from, O_NOFOLLOW, source, moving), source},
                        {openForReading(staging, O_NOFOLLOW, destination, moving), destination}, true, policy,
                        true);
        const int systemError = posix::renameOntoNothing(entryAt(staging), entryAt(to));
        if (systemError != 0) raiseSystemError(systemError, destination, moving);
    } catch (...) {
        undo(staging, destination);
        throw;
    }
    posix::removeCopiedContents({openForReading(from, O_NOFOLLOW, source, moving), source},
                                {openForReading(to, O_NOFOLLOW, destination, moving), destination});
    if (::unlinkat(from.folder(), from.name(), AT_REMOVEDIR) != 0) {
        raiseSystemError(errno == ENOTEMPTY ? EBUSY : errno, source, moving);
    }
}

/// Into a folder that exists, entry by entry.
void mergeFolder(LocalProvider& local, const AbsoluteIRI& source, const Place& from,
                 const AbsoluteIRI& destination, const Place& to, ReplacementPolicy policy) {
    FileDescriptor into(::openat(to.folder(), to.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!into) raiseSystemError(errno == ENOTDIR ? EEXIST : errno, destination, moving);
    posix::moveTreeContents({openForReading(from, O_NOFOLLOW, source, moving), source},
                            {std::move(into), destination}, policy);
    local.removeFolder(source, vfs::RemoveEmptyFolder);
}

}  // namespace

void LocalProvider::copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                             ReplacementPolicy policy) {
    stopIfInterrupted(source);
    ProgressCounter progress;
    progress.found(1, 0);
    const Place from(source);
    const Place to(posix::behindLink(destination));
    FileTransfer transfer(policy);
    off_t bytes = 0;
    raiseIfFailed(transfer.copyFollowing(entryAt(from), entryAt(to), bytes), source, destination, copying);
    progress.found(0, static_cast<std::uint64_t>(bytes));
    progress.finished(1, static_cast<std::uint64_t>(bytes), [&] { return source; });
}

void LocalProvider::moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                             ReplacementPolicy policy) {
    stopIfInterrupted(source);
    ProgressCounter progress;
    progress.found(1, 0);
    const Place from(source);
    const Place to(destination);
    struct ::stat status {};
    if (!statusAt(from, AT_SYMLINK_NOFOLLOW, status)) raiseSystemError(errno, source, moving);
    if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR, source, moving);
    FileTransfer transfer(policy, true);
    const Failure failure = transfer.move(entryAt(from), posix::kindOfMode(status.st_mode), entryAt(to));
    if (failure && failure.side == posix::destinationSide) {
        // The system does not say which of the two names it means.
        raiseSystemError(failure.systemError, renameFailedAt(from, source, destination, failure.systemError),
                         moving);
    }
    raiseIfFailed(failure, source, destination, moving);
    progress.finished(1, 0, [&] { return source; });
}

void LocalProvider::copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                               ReplacementPolicy policy) {
    stopIfInterrupted(source);
    const Place from(source);
    FileDescriptor folder = openForReading(from, 0, source, copying);
    refuseOwnSubtree(*this, source, destination, copying);
    const Place to(destination);
    DestinationFolder target = openDestination(to, destination, policy);
    posix::copyTree({std::move(folder), source}, {std::move(target.folder), destination}, target.isNew,
                    policy);
}

void LocalProvider::moveFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                               ReplacementPolicy policy) {
    stopIfInterrupted(source);
    const Place from(source);
    const Place to(destination);
    struct ::stat status {};
    if (!statusAt(from, AT_SYMLINK_NOFOLLOW, status)) raiseSystemError(errno, source, moving);
    const bool isLink = S_ISLNK(status.st_mode);
    if (!isLink && !S_ISDIR(status.st_mode)) raiseSystemError(ENOTDIR, source, moving);
    if (!isLink) refuseOwnSubtree(*this, source, destination, moving);

    struct ::stat standing {};
    const bool isTaken = statusAt(to, AT_SYMLINK_NOFOLLOW, standing);
    const bool mayMerge = policy != provider::ReplaceWritable && !isLink && statusAt(to, 0, standing) &&
                          S_ISDIR(standing.st_mode);
    if (isTaken && !mayMerge) raiseSystemError(EEXIST, destination, moving);
    if (isTaken) return mergeFolder(*this, source, from, destination, to, policy);
    const int systemError = posix::renameOntoNothing(entryAt(from), entryAt(to));
    if (systemError == 0) return;
    if (systemError != EXDEV) raiseRenameFailure(systemError, from, source, destination);
    if (!isLink) return moveFolderByCopying(source, from, destination, to, policy);
    FileTransfer transfer(provider::ReplaceWritable, true);
    raiseIfFailed(transfer.move(entryAt(from), EntryKind::link, entryAt(to)), source, destination, moving);
}

}  // namespace korvex::runtime::storage
