// The local provider on POSIX systems: copying and moving.
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <utility>

#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/local/posix/copies_ahead.h"
#include "runtime/storage/providers/local/posix/durability.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_progress.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/recent_look.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/storage/transfers.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;
using posix::CopiedEntries;
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
/// How often a folder is emptied that somebody keeps filling.
constexpr int mostRounds = 64;

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
    AbsoluteIRI existing = destination;
    while (local.existence(existing) == provider::AsNeither && existing.hasParent())
        existing = existing.getParent();
    // By where the folders are and not by their paths: what is mounted twice has several of those.
    const Place inner(existing);
    const Place outer(source);
    if (posix::isAtOrBelow(inner.entry(), outer.entry()))
        throw vfs::Exception(vfs::invalidLocation, destination, context);
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
    // A folder that was there may be named by a link. In place of a new one a link is somebody's trap.
    const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (isNew ? O_NOFOLLOW : 0);
    FileDescriptor folder(::openat(place.folder(), place.name(), flags));
    if (!folder) raiseSystemError(errno == ENOTDIR || errno == ELOOP ? EEXIST : errno, location, copying);
    return {std::move(folder), isNew};
}

[[noreturn]] void raiseRenameFailure(int systemError, const Place& from, const AbsoluteIRI& source,
                                     const AbsoluteIRI& destination) {
    const bool isAtSource = posix::sideOfFailedRenaming(from.entry(), systemError) == posix::sourceSide;
    raiseSystemError(systemError == EISDIR ? EEXIST : systemError, isAtSource ? source : destination, moving);
}

/// Between file systems: what could not go from its source in the end is not copied in the first place.
void refuseImmovable(const Place& from, const AbsoluteIRI& source) {
    if (const int systemError = posix::obstacleToLeaving(from.entry()))
        raiseSystemError(systemError, source, moving);
}

/// Where the destination's folder is not to be had, the renaming will say so.
bool isOnAnotherDevice(const Place& destination, const struct ::stat& source) {
    struct ::stat folder {};
    const Place above(destination, ".");
    return statusAt(above, 0, folder) && folder.st_dev != source.st_dev;
}

/// Removes what was made on the way to something that failed; what went wrong first is what is told.
void undo(const Place& folder, const AbsoluteIRI& location) noexcept {
    try {
        ::fchmodat(folder.folder(), folder.name(), S_IRWXU, AT_SYMLINK_NOFOLLOW);
        posix::removeTreeContents({openForReading(folder, O_NOFOLLOW, location, moving), location},
                                  posix::Purpose::undoing);
        ::unlinkat(folder.folder(), folder.name(), AT_REMOVEDIR);
    } catch (const std::exception&) {
        // What cannot be removed stays under its temporary name.
    }
}

/// What was copied has to reach the storage before its source goes.
void settle(const FileDescriptor& copy, const CopiedEntries& copied, const AbsoluteIRI& destination) {
    const int systemError =
        copied.reachesFurtherDisks() ? posix::syncAll() : posix::syncFileSystem(copy.get());
    if (systemError != 0) raiseSystemError(systemError, destination, moving);
}

/// Takes the folder away from which `empty` takes what is in it, as often as something is left.
template <class Empty>
void removeEmptied(const Place& place, const AbsoluteIRI& location, const Empty& empty, int unlessEmpty) {
    for (int round = 0; round < mostRounds; ++round) {
        empty();
        if (::unlinkat(place.folder(), place.name(), AT_REMOVEDIR) == 0 || errno == ENOENT) return;
        const bool isNotEmpty = errno == ENOTEMPTY || errno == EEXIST;
        if (!isNotEmpty) raiseSystemError(errno, location, moving);
    }
    raiseSystemError(unlessEmpty, location, moving);
}

void removeCopied(const Place& place, const AbsoluteIRI& location, const CopiedEntries& copied) {
    const auto empty = [&] {
        posix::removeCopiedContents({openForReading(place, O_NOFOLLOW, location, moving), location}, copied);
    };
    removeEmptied(place, location, empty, EBUSY);
}

/// Between file systems: the tree is copied under a temporary name, renamed, and only then removed at its
/// source.
void moveFolderByCopying(const AbsoluteIRI& source, const Place& from, const AbsoluteIRI& destination,
                         const Place& to, ReplacementPolicy policy) {
    refuseImmovable(from, source);
    CopiedEntries copied;
    const Place staging(to, posix::temporaryName());
    if (::mkdirat(staging.folder(), staging.name(), 0700) != 0) raiseSystemError(errno, destination, moving);
    try {
        const FileDescriptor copy = openForReading(staging, O_NOFOLLOW, destination, moving);
        posix::copyTree({openForReading(from, O_NOFOLLOW, source, moving), source},
                        {openForReading(staging, O_NOFOLLOW, destination, moving), destination}, true, policy,
                        &copied);
        settle(copy, copied, destination);
        const int systemError = posix::renameOntoNothing(staging.entry(), to.entry());
        if (systemError != 0) raiseSystemError(systemError, destination, moving);
    } catch (...) {
        undo(staging, destination);
        throw;
    }
    if (const int systemError = posix::syncFolderOf(to.folder(), to.name()))
        raiseSystemError(systemError, destination, moving);
    copied.close();
    removeCopied(from, source, copied);
}

/// Into a folder that exists: entry by entry where they can be renamed; between file systems all are copied
/// before the first one goes.
void mergeFolder(LocalProvider& local, const AbsoluteIRI& source, const Place& from,
                 const AbsoluteIRI& destination, const Place& to, ReplacementPolicy policy) {
    refuseMergeOntoItself(local, source, destination);
    const auto openSource = [&] { return openForReading(from, O_NOFOLLOW, source, moving); };
    const auto openTarget = [&] {
        FileDescriptor into(::openat(to.folder(), to.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!into) raiseSystemError(errno == ENOTDIR ? EEXIST : errno, destination, moving);
        return into;
    };
    // It is emptied and could not go in the end: what is mounted stays where it is.
    if (posix::isMountPoint(openSource().get())) raiseSystemError(EBUSY, source, moving);
    const FileDescriptor into = openTarget();
    struct ::stat leaving {};
    struct ::stat standing {};
    const bool areApart = statusAt(from, AT_SYMLINK_NOFOLLOW, leaving) &&
                          ::fstat(into.get(), &standing) == 0 && leaving.st_dev != standing.st_dev;
    if (areApart) {
        refuseImmovable(from, source);
        CopiedEntries copied;
        posix::copyTree({openSource(), source}, {openTarget(), destination}, false, policy, &copied);
        settle(into, copied, destination);
        copied.close();
        return removeCopied(from, source, copied);
    }
    const auto empty = [&] {
        posix::moveTreeContents({openSource(), source}, {openTarget(), destination}, policy);
    };
    removeEmptied(from, source, empty, ENOTEMPTY);
}

}  // namespace

void LocalProvider::copyFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                             ReplacementPolicy policy) {
    stopIfInterrupted(source);
    posix::forgetWritable();
    ProgressCounter counter;
    const auto location = [&] { return source; };
    std::uint64_t bytes = 0;
    posix::CopiesAhead* const ahead = posix::CopiesAhead::ofThisThread();
    if (ahead != nullptr && ahead->takeNext(source, destination, policy, bytes)) {
        counter.found(1, bytes);
        return counter.finished(1, bytes, location);
    }
    posix::FileProgress progress(counter, location);
    const Place from(source);
    const Place to(destination);
    FileTransfer transfer(policy);
    const auto copy = [&] { return transfer.copyFollowing(from.entry(), to.entry(), progress.watcher()); };
    Failure failure = copy();
    // What was made ahead may have taken the room that this one needs.
    const bool mayTryAgain = failure && failure.systemError != posix::interruptedError && ahead != nullptr;
    if (mayTryAgain && ahead->withdraw()) failure = copy();
    raiseIfFailed(failure, source, destination, copying);
    progress.finish();
}

std::unique_ptr<WorkAhead> LocalProvider::copyAhead(std::vector<FilePair> files, ReplacementPolicy policy) {
    return std::make_unique<posix::CopiesAhead>(std::move(files), policy);
}

void LocalProvider::moveFile(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                             ReplacementPolicy policy) {
    stopIfInterrupted(source);
    posix::forgetWritable();
    ProgressCounter counter;
    const auto location = [&] { return source; };
    posix::FileProgress progress(counter, location);
    const Place from(source);
    const Place to(destination);
    struct ::stat status {};
    if (!statusAt(from, AT_SYMLINK_NOFOLLOW, status)) raiseSystemError(errno, source, moving);
    if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR, source, moving);
    if (isOnAnotherDevice(to, status)) refuseImmovable(from, source);
    FileTransfer transfer(policy, true);
    const Failure failure =
        transfer.move(from.entry(), posix::kindOfMode(status.st_mode), to.entry(), progress.watcher());
    if (failure && failure.side == posix::destinationSide) {
        // The system does not say which of the two names it means.
        raiseRenameFailure(failure.systemError, from, source, destination);
    }
    raiseIfFailed(failure, source, destination, moving);
    progress.finish();
}

void LocalProvider::copyFolder(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                               ReplacementPolicy policy) {
    stopIfInterrupted(source);
    posix::forgetWritable();
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
    posix::forgetWritable();
    const Place from(source);
    const Place to(destination);
    struct ::stat status {};
    if (!statusAt(from, AT_SYMLINK_NOFOLLOW, status)) raiseSystemError(errno, source, moving);
    // The system would refuse such a name in the end, but by then the folder it leads to would be empty.
    const std::string name = from.lastComponent();
    if (name == "." || name == "..") throw vfs::Exception(vfs::invalidLocation, source, moving);
    const bool isLink = S_ISLNK(status.st_mode);
    if (!isLink && !S_ISDIR(status.st_mode)) raiseSystemError(ENOTDIR, source, moving);
    if (!isLink) refuseOwnSubtree(*this, source, destination, moving);

    struct ::stat standing {};
    const bool isTaken = statusAt(to, AT_SYMLINK_NOFOLLOW, standing);
    const bool mayMerge = policy != provider::ReplaceWritable && !isLink && statusAt(to, 0, standing) &&
                          S_ISDIR(standing.st_mode);
    if (isTaken && !mayMerge) raiseSystemError(EEXIST, destination, moving);
    if (isTaken) return mergeFolder(*this, source, from, destination, to, policy);
    const int systemError = posix::renameOntoNothing(from.entry(), to.entry());
    if (systemError == 0) return tellOfOneItem([&] { return source; });
    if (systemError != EXDEV) raiseRenameFailure(systemError, from, source, destination);
    if (!isLink) return moveFolderByCopying(source, from, destination, to, policy);
    FileTransfer transfer(provider::ReplaceWritable, true);
    raiseIfFailed(transfer.move(from.entry(), EntryKind::link, to.entry(), nullptr), source, destination,
                  moving);
    tellOfOneItem([&] { return source; });
}

}  // namespace korvex::runtime::storage
