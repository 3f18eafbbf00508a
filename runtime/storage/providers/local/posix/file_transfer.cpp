// The transfer of one entry from folder to folder.
#include "runtime/storage/providers/local/posix/file_transfer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/clock_step.h"
#include "runtime/storage/providers/local/posix/created_file.h"
#include "runtime/storage/providers/local/posix/durability.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_attributes.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/open_for_reading.h"

namespace korvex::runtime::storage::posix {

namespace {

using foundation::storage::provider::ReplaceAny;

/// A file of at most this size, one page, is written with one call, which not even a kill interrupts.
constexpr off_t writtenAtOnce = 4096;
/// How often a file may change at the very moment at which it is looked at.
constexpr int mostLooks = 3;

/// Of two names of one file the first one goes: the system's own renaming leaves both. 0 or the errno.
int removeOtherName(EntryAt source, EntryAt destination) {
    struct ::stat from {};
    struct ::stat to {};
    if (::fstatat(source.folder, source.name, &from, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    if (::fstatat(destination.folder, destination.name, &to, AT_SYMLINK_NOFOLLOW) != 0) return 0;
    // With a single name left, both spellings are that name.
    if (!isSameFile(from, to) || from.st_nlink < 2) return 0;
    bool isOne = false;
    if (const int systemError = isOneEntry(source, destination, isOne)) return systemError;
    return isOne || ::unlinkat(source.folder, source.name, 0) == 0 ? 0 : errno;
}

/// 0, or why the file may not be written. What the disk refuses goes before what the file does.
int obstacleToWriting(EntryAt entry, const struct ::stat& status) noexcept {
    if (::faccessat(entry.folder, entry.name, W_OK, AT_EACCESS) != 0) return errno;
    return (status.st_mode & 0222) != 0 ? 0 : EACCES;
}

/// A link leads nowhere, or in a circle.
bool leadsNowhere(int systemError) noexcept {
    return systemError == ENOENT || systemError == ENOTDIR || systemError == ELOOP;
}

/// Put in the place of what it leads to, at any step on the way, a link would lead to itself, and what it led
/// to be gone.
bool leadsTo(EntryAt link, const struct ::stat& standing) {
    struct ::stat target {};
    if (::fstatat(link.folder, link.name, &target, 0) == 0 && isSameFile(target, standing)) return true;
    return S_ISLNK(standing.st_mode) && EndOfLink(link, &standing).meetsWatched();
}

/// Of the errors with which a file gets no name: whether any other file would meet them there.
bool meetsNamedFilesToo(int systemError) noexcept {
    constexpr int errors[] = {EEXIST, ENOSPC, EDQUOT, EROFS, EIO, EMLINK, ENAMETOOLONG};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

mode_t groupBitsOfEverybody(mode_t mode) noexcept { return mode & ((mode & 0007) << 3); }
}  // namespace

/// A file that is open to be copied.
struct FileTransfer::SourceFile {
    /// The names come into the buffer, which is one for each thread.
    explicit SourceFile(std::vector<char>& names) : attributeNames(names) {}

    FileDescriptor file;
    struct ::stat status {};
    CopyAbilities unasked;
    CopyAbilities* abilities = &unasked;
    std::vector<char>& attributeNames;
    DestinationFolder into;

    /// Whether a copy that was written cannot fail any more when it is closed.
    bool closesSilentlyOn(dev_t device) const noexcept {
        return abilities->closesSilently && device == status.st_dev;
    }
};

/// What stands at a destination.
struct FileTransfer::Standing {
    bool isThere = false;
    struct ::stat entry {};  ///< links told apart
    struct ::stat file {};   ///< links followed; as `entry` when there is no link, or it leads nowhere

    bool isLinkToFile() const noexcept { return S_ISLNK(entry.st_mode) && S_ISREG(file.st_mode); }
};

int FileTransfer::mayReplace(EntryAt destination, EntryKind by) const {
    Standing standing;
    return lookAt(destination, by, standing);
}

int FileTransfer::lookAt(EntryAt destination, EntryKind by, Standing& standing) const {
    if (::fstatat(destination.folder, destination.name, &standing.entry, AT_SYMLINK_NOFOLLOW) != 0)
        return errno == ENOENT ? 0 : errno;
    standing.isThere = true;
    standing.file = standing.entry;
    if (S_ISLNK(standing.entry.st_mode)) {
        if (by == EntryKind::link) return 0;
        // A link is as writable as what it leads to; one that leads nowhere is nothing that may be written.
        if (::fstatat(destination.folder, destination.name, &standing.file, 0) != 0)
            return policy_ == ReplaceAny && leadsNowhere(errno) ? 0 : EEXIST;
    }
    if (!S_ISREG(standing.file.st_mode)) return EEXIST;
    return policy_ == ReplaceAny ? 0 : obstacleToWriting(destination, standing.file);
}

Failure FileTransfer::copy(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher,
                           const DestinationFolder& into) {
    if (kind == EntryKind::folder) return {EISDIR, sourceSide};
    if (kind == EntryKind::link) return copyLink(source, destination);
    if (kind == EntryKind::special) return copySpecial(source, destination);
    thread_local std::vector<char> attributeNames;
    SourceFile input(attributeNames);
    if (const Failure failure = open(source, Links::tellApart, input)) return failure;
    input.abilities = &abilities_.of(input.file.get(), input.status.st_dev);
    input.into = into;
    return copyOpened(input, destination, Links::tellApart, watcher);
}

Failure FileTransfer::copyFollowing(EntryAt source, EntryAt destination, CopyWatcher* watcher) {
    struct ::stat status {};
    if (::fstatat(source.folder, source.name, &status, 0) != 0) return {errno, sourceSide};
    if (const int systemError = unlessFile(status)) return {systemError, sourceSide};
    thread_local std::vector<char> attributeNames;
    SourceFile input(attributeNames);
    if (const Failure failure = open(source, Links::follow, input)) return failure;
    askWhatItTells(input);
    return copyOpened(input, destination, Links::follow, watcher);
}

Failure FileTransfer::copyOntoNothing(EntryAt source, EntryAt destination, off_t mostBytes,
                                      struct ::stat& made) {
    thread_local std::vector<char> attributeNames;
    SourceFile input(attributeNames);
    if (const Failure failure = open(source, Links::tellApart, input, Lease::isLeft)) return failure;
    askWhatItTells(input);
    const bool isUnnamed = !isWrittenAtOnce(input);
    const bool needsName = isUnnamed && !makesUnnamed_.load(std::memory_order_relaxed);
    if (needsName || input.status.st_size > mostBytes) return {EFBIG, sourceSide};
    if (const Failure failure =
            listExtendedAttributes(input.file.get(), *input.abilities, input.attributeNames))
        return failure;
    const struct ::stat* const owner = ownerOf(input, {});
    if (!isUnnamed) {
        CreatedFile output(destination, modeAtCreation(input, owner));
        if (output.systemError() != 0) return {output.systemError(), destinationSide};
        const int file = output.file().get();
        if (const Failure failure = fill(input, file, output.made(), owner, nullptr)) return failure;
        int systemError = ::fstat(file, &made) == 0 ? 0 : errno;
        if (systemError == 0) systemError = output.file().close();
        if (systemError == 0) output.keep();
        return {systemError, destinationSide};
    }
    UnnamedFile output(destination, modeAtCreation(input, owner));
    if (output.systemError() != 0) {
        makesUnnamed_.store(false, std::memory_order_relaxed);
        return {EFBIG, destinationSide};
    }
    const int file = output.file().get();
    if (const Failure failure = fill(input, file, output.made(), owner, nullptr)) return failure;
    int systemError = input.closesSilentlyOn(output.made().st_dev) ? 0 : output.flush();
    if (systemError == 0) systemError = output.giveName(destination);
    if (systemError == 0 && ::fstat(file, &made) != 0) systemError = errno;
    return {systemError, destinationSide};
}

/// It is not worth asking for the sake of one small file: what takes up room on a disk has the size that it
/// says, unlike what the system makes up.
void FileTransfer::askWhatItTells(SourceFile& input) {
    const bool isSmall = input.status.st_blocks > 0 && input.status.st_size <= writtenAtOnce;
    input.unasked.tellsSizes = isSmall && input.status.st_size > 0;
    if (!input.unasked.tellsSizes) input.abilities = &abilities_.of(input.file.get(), input.status.st_dev);
}

bool FileTransfer::isWrittenAtOnce(const SourceFile& source) noexcept {
    const bool isSizeKnown = source.status.st_size > 0 || source.abilities->tellsSizes;
    return isSizeKnown && source.status.st_size <= writtenAtOnce && !mayHaveHoles(source.status);
}

Failure FileTransfer::open(EntryAt source, Links links, SourceFile& opened, Lease lease) const {
    int systemError = 0;
    opened.file = openForReading(source, links, opened.status, systemError, lease);
    return {systemError, sourceSide};
}

Failure FileTransfer::copyOpened(SourceFile& source, EntryAt destination, Links links,
                                 CopyWatcher* watcher) const {
    const Failure failure =
        listExtendedAttributes(source.file.get(), *source.abilities, source.attributeNames);
    if (failure) return failure;
    if (source.into.isHidden || isWrittenAtOnce(source)) {
        const Failure inPlace = copyInPlace(source, destination, watcher);
        if (inPlace.systemError != EEXIST) return inPlace;
        // Somebody else has put something there.
        source.into = {};
    }
    return copyBeside(source, destination, links, Durability::whenever, watcher);
}

Failure FileTransfer::copyInPlace(const SourceFile& source, EntryAt destination, CopyWatcher* watcher) const {
    const struct ::stat* const owner = ownerOf(source, {});
    const mode_t bits = modeAtCreation(source, owner);
    if (owner == nullptr) {
        if (const std::optional<struct ::stat> expected = expectedOf(source, bits)) {
            CreatedFile output(destination, bits, *expected);
            return fillInPlace(source, output, owner, watcher);
        }
    }
    CreatedFile output(destination, bits);
    const bool isByMaskAlone = !source.into.handsAccessListsOn && output.systemError() == 0;
    if (isByMaskAlone && (output.made().st_mode & 0777) == bits)
        grantedBits_.fetch_or(bits, std::memory_order_relaxed);
    return fillInPlace(source, output, owner, watcher);
}

Failure FileTransfer::fillInPlace(const SourceFile& source, CreatedFile& output, const struct ::stat* owner,
                                  CopyWatcher* watcher) const {
    if (output.systemError() != 0) return {output.systemError(), destinationSide};
    if (const Failure failure = fill(source, output.file().get(), output.made(), owner, watcher))
        return failure;
    if (const int systemError = output.file().close()) return {systemError, destinationSide};
    output.keep();
    return {};
}

/// What a new file will be like, where that can be known without asking: nobody else gets at it, no access
/// list comes from its folder, and its bits are such as others have got. Whose it is matters for special bits
/// only.
std::optional<struct ::stat> FileTransfer::expectedOf(const SourceFile& source, mode_t bits) const {
    constexpr mode_t special = S_ISUID | S_ISGID | S_ISVTX;
    const bool isPlain = source.into.isHidden && !source.into.handsAccessListsOn &&
                         source.attributeNames.empty() && (source.status.st_mode & special) == 0;
    const bool areGranted = (bits & ~grantedBits_.load(std::memory_order_relaxed)) == 0;
    if (!isPlain || !areGranted || !source.closesSilentlyOn(source.into.device)) return std::nullopt;
    struct ::stat expected = source.status;
    expected.st_dev = source.into.device;
    expected.st_mode = S_IFREG | bits;
    return expected;
}

/// Whole without a name or under a name of its own first, then under its final one.
Failure FileTransfer::copyBeside(const SourceFile& source, EntryAt destination, Links links,
                                 Durability durability, CopyWatcher* watcher) const {
    Standing standing;
    const int systemError = source.into.isNew ? 0 : lookAt(destination, EntryKind::file, standing);
    if (systemError != 0) return {systemError, destinationSide};
    if (links == Links::follow && standing.isLinkToFile()) {
        const EndOfLink end(destination);
        if (end.systemError() != 0) return {end.systemError(), destinationSide};
        return copyBeside(source, end.entry(), Links::tellApart, durability, watcher);
    }
    // Moved onto itself, over whatever mounts, the only copy would go.
    if (standing.isThere && isSameFile(source.status, standing.entry))
        return keepsOwner_ ? Failure{EBUSY, sourceSide} : Failure{};
    if (!standing.isThere && makesUnnamed_.load(std::memory_order_relaxed)) {
        if (const std::optional<Failure> outcome = copyUnnamed(source, destination, durability, watcher))
            return *outcome;
        makesUnnamed_.store(false, std::memory_order_relaxed);
    }
    const std::string temporary = beside(destination, temporaryName());
    const EntryAt written{destination.folder, temporary.c_str()};
    const struct ::stat* const owner = ownerOf(source, standing);
    CreatedFile output(written, modeAtCreation(source, owner));
    if (output.systemError() != 0) return {output.systemError(), destinationSide};
    if (const Failure failure = fill(source, output.file().get(), output.made(), owner, watcher))
        return failure;
    int outcome = durability == Durability::atOnce ? syncFile(output.file().get()) : 0;
    if (outcome == 0) outcome = output.file().close();
    if (outcome == 0) outcome = rename(written, EntryKind::file, destination, standing.isThere);
    if (outcome == 0) output.keep();
    return {outcome, destinationSide};
}

/// A new file that gets its name when it is whole; cheaper than to rename one. None when that cannot be had.
std::optional<Failure> FileTransfer::copyUnnamed(const SourceFile& source, EntryAt destination,
                                                 Durability durability, CopyWatcher* watcher) const {
    const struct ::stat* const owner = ownerOf(source, {});
    UnnamedFile output(destination, modeAtCreation(source, owner));
    if (output.systemError() != 0) return std::nullopt;
    const int file = output.file().get();
    if (const Failure failure = fill(source, file, output.made(), owner, watcher)) return failure;
    int systemError = durability == Durability::atOnce ? syncFile(file) : 0;
    if (systemError != 0) return Failure{systemError, destinationSide};
    if (!source.closesSilentlyOn(output.made().st_dev)) systemError = output.flush();
    if (systemError != 0) return Failure{systemError, destinationSide};
    systemError = output.giveName(destination);
    if (systemError == EEXIST) systemError = replaceByUnnamed(output, destination);
    // What a file with a name would not meet says that this file cannot get one.
    if (systemError != 0 && !meetsNamedFilesToo(systemError)) return std::nullopt;
    return Failure{systemError, destinationSide};
}

/// 0 or the errno. What has come meanwhile is replaced no more than what stood there at the beginning.
int FileTransfer::replaceByUnnamed(const UnnamedFile& file, EntryAt destination) const {
    const std::string temporary = beside(destination, temporaryName());
    const EntryAt written{destination.folder, temporary.c_str()};
    if (const int obstacle = mayReplace(destination)) return obstacle;
    if (const int unnamed = file.giveName(written)) return unnamed;
    RemovedUnlessKept removed(written);
    const int unrenamed = rename(written, EntryKind::file, destination, true);
    if (unrenamed == 0) removed.keep();
    return unrenamed;
}

int FileTransfer::rename(EntryAt written, EntryKind kind, EntryAt destination, bool isReplacing) const {
    if (!isReplacing) {
        const int systemError = renameOntoNothing(written, destination);
        if (systemError != EEXIST) return systemError;
    }
    // To write the copy took its time: what stands there now may be another file, or protected.
    if (const int obstacle = mayReplace(destination, kind)) return obstacle;
    if (::renameat(written.folder, written.name, destination.folder, destination.name) == 0) return 0;
    return errno == EISDIR || errno == ENOTEMPTY ? EEXIST : errno;
}

/// Whose the copy is to be; null: whosoever the process is.
const struct ::stat* FileTransfer::ownerOf(const SourceFile& source,
                                           const Standing& standing) const noexcept {
    if (keepsOwner_) return &source.status;
    return standing.isThere && S_ISREG(standing.entry.st_mode) ? &standing.entry : nullptr;
}

/// With its own permission bits from the start there is nothing left to do in most cases. But nobody else may
/// get at a file that is still to have an access list or another owner, or that has one from its folder,
/// where the group's bits are what others are allowed at most. What lends rights comes last.
mode_t FileTransfer::modeAtCreation(const SourceFile& source, const struct ::stat* owner) noexcept {
    const bool changesOwner =
        owner != nullptr && (owner->st_uid != ::geteuid() || owner->st_gid != ::getegid());
    if (changesOwner || !source.attributeNames.empty()) return 0600;
    return (source.status.st_mode & 0707) | groupBitsOfEverybody(source.status.st_mode) | 0600;
}

/// Content and attributes.
Failure FileTransfer::fill(const SourceFile& source, int file, struct ::stat made, const struct ::stat* owner,
                           CopyWatcher* watcher) {
    const OpenPair files{source.file.get(), source.status, file, made.st_dev};
    if (const Failure failure = copyContent(files, *source.abilities, watcher)) return failure;
    if (owner != nullptr) giveOwner(file, *owner, made);
    if (const Failure failure = copyExtendedAttributes(files.source, file, source.attributeNames, made))
        return failure;
    int systemError = source.into.handsAccessListsOn
                          ? removeInheritedAccessLists(file, made.st_mode, source.attributeNames)
                          : 0;
    struct ::stat wanted = source.status;
    wanted.st_mode = bitsWithoutLostList(wanted.st_mode, file, source.attributeNames);
    if (systemError == 0) systemError = copyModeAndTimes(wanted, file, made);
    return {systemError, destinationSide};
}

Failure FileTransfer::dress(int source, const struct ::stat& status, int destination, bool hasInherited) {
    std::vector<char> names;
    if (const Failure failure = listExtendedAttributes(source, abilities_.of(source, status.st_dev), names)) {
        return failure;
    }
    struct ::stat made {};
    if (::fstat(destination, &made) != 0) return {errno, destinationSide};
    if (keepsOwner_) giveOwner(destination, status, made);
    if (const Failure failure = copyExtendedAttributes(source, destination, names, made)) return failure;
    int systemError = hasInherited ? removeInheritedAccessLists(destination, made.st_mode, names) : 0;
    struct ::stat wanted = status;
    wanted.st_mode = bitsWithoutLostList(wanted.st_mode, destination, names);
    if (systemError == 0) systemError = copyModeAndTimes(wanted, destination, made);
    return {systemError, destinationSide};
}

Failure FileTransfer::copyLink(EntryAt source, EntryAt destination) const {
    struct ::stat status {};
    if (::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    const std::string target = linkTargetOf(source);
    if (target.empty()) return {errno, sourceSide};
    const int systemError = makeLink(target, status, destination);
    if (systemError != EEXIST) return {systemError, destinationSide};

    Standing standing;
    if (const int obstacle = lookAt(destination, EntryKind::link, standing))
        return {obstacle, destinationSide};
    if (standing.isThere && isSameFile(status, standing.entry)) return {};
    if (standing.isThere && leadsTo(source, standing.entry)) return {EEXIST, destinationSide};
    const std::string temporary = beside(destination, temporaryName());
    const EntryAt written{destination.folder, temporary.c_str()};
    if (const int failed = makeLink(target, status, written)) return {failed, destinationSide};
    return replaceBy(written, EntryKind::link, destination);
}

/// 0 or the errno. EPERM may also say that the file system has no links.
int FileTransfer::makeLink(const std::string& target, const struct ::stat& status, EntryAt link) const {
    if (::symlinkat(target.c_str(), link.folder, link.name) != 0) {
        if (errno != EPERM) return errno;
        const bool mayMake = ::faccessat(link.folder, beside(link, ".").c_str(), W_OK, AT_EACCESS) == 0;
        return mayMake ? EOPNOTSUPP : EPERM;
    }
    keepOwnerAndTime(status, link);
    return 0;
}

Failure FileTransfer::copySpecial(EntryAt source, EntryAt destination) const {
    struct ::stat status {};
    if (::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    if (S_ISSOCK(status.st_mode)) return {EOPNOTSUPP, sourceSide};
    const mode_t kindAndNoBits = status.st_mode & S_IFMT;
    if (::mknodat(destination.folder, destination.name, kindAndNoBits | 0600, status.st_rdev) != 0) {
        return {errno, destinationSide};
    }
    keepOwnerAndTime(status, destination);
    ::fchmodat(destination.folder, destination.name, status.st_mode & 0777, AT_SYMLINK_NOFOLLOW);
    return {};
}

/// Puts a link or special file that this program has made under its final name.
Failure FileTransfer::replaceBy(EntryAt written, EntryKind kind, EntryAt destination) const {
    RemovedUnlessKept removed(written);
    if (const int systemError = rename(written, kind, destination, true))
        return {systemError, destinationSide};
    removed.keep();
    return {};
}

/// Of an entry that is not open; as far as the process may and the file system keeps it.
void FileTransfer::keepOwnerAndTime(const struct ::stat& source, EntryAt made) const {
    if (keepsOwner_) {
        // Where it may not, the entry stays the process's own.
        [[maybe_unused]] const int result =
            ::fchownat(made.folder, made.name, source.st_uid, source.st_gid, AT_SYMLINK_NOFOLLOW);
    }
    const struct timespec times[2] = {{0, UTIME_OMIT}, source.st_mtim};
    ::utimensat(made.folder, made.name, times, AT_SYMLINK_NOFOLLOW);
}

Failure FileTransfer::move(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher) {
    Standing standing;
    if (const int systemError = lookAt(destination, kind, standing)) return {systemError, destinationSide};
    struct ::stat status {};
    if (::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    const bool isSame = standing.isThere && isSameFile(status, standing.entry);
    const bool isLinkToIt = standing.isThere && S_ISLNK(status.st_mode) && leadsTo(source, standing.entry);
    if (isLinkToIt && !isSame) return {EEXIST, destinationSide};
    const int systemError = rename(source, kind, destination, standing.isThere);
    if (systemError != 0 && systemError != EXDEV) return {systemError, destinationSide};
    // The system also refuses to rename within one disk that is mounted twice.
    if (isSame) return {removeOtherName(source, destination), sourceSide};
    return systemError == 0 ? Failure{} : copyAndRemove(source, kind, destination, watcher);
}

/// Copies under a temporary name and renames; only when both have reached the storage the source goes.
Failure FileTransfer::copyAndRemove(EntryAt source, EntryKind kind, EntryAt destination,
                                    CopyWatcher* watcher) {
    if (isMountPoint(source)) return {EBUSY, sourceSide};
    struct ::stat before {};
    struct ::stat after {};
    bool isSettled = false;
    for (int looks = 0; !isSettled && looks < mostLooks; ++looks) {
        if (::fstatat(source.folder, source.name, &before, AT_SYMLINK_NOFOLLOW) != 0)
            return {errno, sourceSide};
        isSettled = !awaitClockStep(before.st_ctim);
        if (!isSettled && interpreter::isInterruptPending()) return {interruptedError, sourceSide};
    }
    if (const Failure failure = copyDurably(source, kind, destination, watcher)) return failure;
    if (const int systemError = syncFolderOf(destination.folder, destination.name))
        return {systemError, destinationSide};
    if (::fstatat(source.folder, source.name, &after, AT_SYMLINK_NOFOLLOW) != 0) return {errno, sourceSide};
    // One more change could have left the times as they were.
    if (!isSettled || !isUnchanged(before, after)) return {EBUSY, sourceSide};
    return {::unlinkat(source.folder, source.name, 0) == 0 ? 0 : errno, sourceSide};
}

Failure FileTransfer::copyDurably(EntryAt source, EntryKind kind, EntryAt destination, CopyWatcher* watcher) {
    if (kind == EntryKind::link) return copyLink(source, destination);
    if (kind == EntryKind::special) {
        const std::string temporary = beside(destination, temporaryName());
        const EntryAt written{destination.folder, temporary.c_str()};
        const Failure failure = copySpecial(source, written);
        return failure ? failure : replaceBy(written, EntryKind::special, destination);
    }
    std::vector<char> attributeNames;
    SourceFile input(attributeNames);
    if (const Failure failure = open(source, Links::tellApart, input)) return failure;
    input.abilities = &abilities_.of(input.file.get(), input.status.st_dev);
    const Failure failure = listExtendedAttributes(input.file.get(), *input.abilities, attributeNames);
    return failure ? failure : copyBeside(input, destination, Links::tellApart, Durability::atOnce, watcher);
}

}  // namespace korvex::runtime::storage::posix
