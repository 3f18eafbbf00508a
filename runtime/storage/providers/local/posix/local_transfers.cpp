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
#include "runtime/storage/providers/local/posix/hidden_folder.h"
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
using posix::CopyInto;
using posix::EntryAt;
using posix::EntryKind;
using posix::Failure;
using posix::FileDescriptor;
using posix::FileTransfer;
using posix::HiddenFolder;
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

FileDescriptor openAgain(int folder, const AbsoluteIRI& location, const char16_t* context) {
    FileDescriptor opened(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) raiseSystemError(errno, location, context);
    return opened;
}

/// Copies to where nothing stands, under a temporary name until the copy is whole. False when nothing has
/// come of it: something has come to stand there meanwhile, or the disk does not rename folders.
bool copyHidden(int source, const AbsoluteIRI& sourceLocation, const Place& place,
                const AbsoluteIRI& location, ReplacementPolicy policy) {
    HiddenFolder copy(place, location);
    if (copy.systemError() != 0) return false;
    try {
        posix::copyTree({openAgain(source, sourceLocation, copying), sourceLocation},
                        {openAgain(copy.handle(), location, copying), location}, CopyInto::hidden, policy);
    } catch (...) {
        // What has been copied by then stays, each file of it whole, unless the name is taken.
        copy.publish();
        throw;
    }
    return copy.publish() == 0;
}

/// Copies under the name itself, into a folder that is made for it or stands there. One that stood there from
/// the beginning may be named by a link. Where nothing stood a link is somebody's trap.
void copyOpenly(int source, const AbsoluteIRI& sourceLocation, const Place& place,
                const AbsoluteIRI& location, ReplacementPolicy policy, bool mayBeLink) {
    int systemError = 0;
    FileDescriptor folder = posix::makeOwnFolder(place.entry(), systemError);
    const CopyInto into = folder ? CopyInto::made : CopyInto::standing;
    if (systemError == EEXIST && policy != provider::ReplaceWritable) {
        const int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (mayBeLink ? 0 : O_NOFOLLOW);
        folder = FileDescriptor(::openat(place.folder(), place.name(), flags));
        systemError = folder ? 0 : errno == ENOTDIR || errno == ELOOP ? EEXIST : errno;
    }
    if (systemError != 0) raiseSystemError(systemError, location, copying);
    posix::copyTree({openAgain(source, sourceLocation, copying), sourceLocation},
                    {std::move(folder), location}, into, policy);
}

/// What was copied has to reach the storage before its source goes.
void settle(int copy, const CopiedEntries& copied, const AbsoluteIRI& destination) {
    const int systemError = copied.reachesFurtherDisks() ? posix::syncAll() : posix::syncFileSystem(copy);
    if (systemError != 0) raiseSystemError(systemError, destination, moving);
}

/// The folder that is to be emptied. It is held open until it is gone: by its path another one may be found
/// later, one that somebody has put there, or what a link on the way leads to that was just replaced.
FileDescriptor openToEmpty(const Place& place, const AbsoluteIRI& location, const struct ::stat& wanted) {
    FileDescriptor folder = openForReading(place, O_NOFOLLOW, location, moving);
    struct ::stat opened {};
    if (::fstat(folder.get(), &opened) != 0) raiseSystemError(errno, location, moving);
    if (!posix::isSameFile(opened, wanted)) raiseSystemError(EBUSY, location, moving);
    return folder;
}

/// Takes the folder away from which `empty` takes what is in it, as often as something is left.
template <class Empty>
void removeEmptied(const Place& place, const AbsoluteIRI& location, const struct ::stat& folder,
                   const Empty& empty, int unlessEmpty) {
    for (int round = 0; round < mostRounds; ++round) {
        empty();
        struct ::stat standing {};
        const bool isAnother =
            statusAt(place, AT_SYMLINK_NOFOLLOW, standing) && !posix::isSameFile(standing, folder);
        if (isAnother) raiseSystemError(EBUSY, location, moving);
        if (::unlinkat(place.folder(), place.name(), AT_REMOVEDIR) == 0 || errno == ENOENT) return;
        const bool isNotEmpty = errno == ENOTEMPTY || errno == EEXIST;
        if (!isNotEmpty) raiseSystemError(errno, location, moving);
    }
    raiseSystemError(unlessEmpty, location, moving);
}

void removeCopied(const Place& place, int folder, const AbsoluteIRI& location, const struct ::stat& status,
                  const CopiedEntries& copied) {
    const auto empty = [&] {
        posix::removeCopiedContents({openAgain(folder, location, moving), location}, copied);
    };
    removeEmptied(place, location, status, empty, EBUSY);
}

/// Between file systems: the tree is copied under a temporary name, renamed, and only then removed at its
/// source.
void moveFolderByCopying(const AbsoluteIRI& source, const Place& from, const struct ::stat& leaving,
                         const AbsoluteIRI& destination, const Place& to, ReplacementPolicy policy) {
    refuseImmovable(from, source);
    CopiedEntries copied;
    const FileDescriptor folder = openToEmpty(from, source, leaving);
    {
        HiddenFolder copy(to, destination);
        if (copy.systemError() != 0) raiseSystemError(copy.systemError(), destination, moving);
        posix::copyTree({openAgain(folder.get(), source, moving), source},
                        {openAgain(copy.handle(), destination, moving), destination}, CopyInto::hidden,
                        policy, &copied);
        settle(copy.handle(), copied, destination);
        if (const int systemError = copy.publish()) raiseSystemError(systemError, destination, moving);
    }
    if (const int systemError = posix::syncFolderOf(to.folder(), to.name()))
        raiseSystemError(systemError, destination, moving);
    copied.close();
    removeCopied(from, folder.get(), source, leaving, copied);
}

/// Into a folder that exists: entry by entry where they can be renamed; between file systems all are copied
/// before the first one goes.
void mergeFolder(LocalProvider& local, const AbsoluteIRI& source, const Place& from,
                 const struct ::stat& leaving, const AbsoluteIRI& destination, const Place& to,
                 ReplacementPolicy policy) {
    refuseMergeOntoItself(local, source, destination);
    const FileDescriptor folder = openToEmpty(from, source, leaving);
    const auto openSource = [&] { return openAgain(folder.get(), source, moving); };
    const auto openTarget = [&] {
        FileDescriptor into(::openat(to.folder(), to.name(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!into) raiseSystemError(errno == ENOTDIR ? EEXIST : errno, destination, moving);
        return into;
    };
    // It is emptied and could not go in the end: what is mounted stays where it is.
    if (posix::isMountPoint(folder.get())) raiseSystemError(EBUSY, source, moving);
    const FileDescriptor into = openTarget();
    struct ::stat standing {};
    const bool areApart = ::fstat(into.get(), &standing) == 0 && leaving.st_dev != standing.st_dev;
    if (areApart) {
        refuseImmovable(from, source);
        CopiedEntries copied;
        posix::copyTree({openSource(), source}, {openTarget(), destination}, CopyInto::standing, policy,
                        &copied);
        settle(into.get(), copied, destination);
        copied.close();
        return removeCopied(from, folder.get(), source, leaving, copied);
    }
    const auto empty = [&] {
        posix::moveTreeContents({openSource(), source}, {openTarget(), destination}, policy);
    };
    removeEmptied(from, source, leaving, empty, ENOTEMPTY);
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
    const FileDescriptor folder = openForReading(from, 0, source, copying);
    refuseOwnSubtree(*this, source, destination, copying);
    const Place to(destination);
    struct ::stat standing {};
    const bool isNew = !statusAt(to, AT_SYMLINK_NOFOLLOW, standing) && errno == ENOENT;
    if (isNew && copyHidden(folder.get(), source, to, destination, policy)) return;
    copyOpenly(folder.get(), source, to, destination, policy, !isNew);
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
    if (isTaken) return mergeFolder(*this, source, from, status, destination, to, policy);
    const int systemError = posix::renameOntoNothing(from.entry(), to.entry());
    if (systemError == 0) return tellOfOneItem([&] { return source; });
    if (systemError != EXDEV) raiseRenameFailure(systemError, from, source, destination);
    if (!isLink) return moveFolderByCopying(source, from, status, destination, to, policy);
    FileTransfer transfer(provider::ReplaceWritable, true);
    raiseIfFailed(transfer.move(from.entry(), EntryKind::link, to.entry(), nullptr), source, destination,
                  moving);
    tellOfOneItem([&] { return source; });
}

}  // namespace korvex::runtime::storage
