// Why an entry cannot be taken out of the folder that holds it.
#include "runtime/storage/providers/local/posix/leaving.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <string>

namespace korvex::runtime::storage::posix {

namespace {

constexpr std::uint64_t unchangeable = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;

bool mayBeWritten(int folder, const char* name) noexcept {
    return ::faccessat(folder, name, W_OK | X_OK, AT_EACCESS) == 0;
}

/// The system takes the one or the other, depending on who forbids it.
bool meansForbidden(int systemError) noexcept { return systemError == EACCES || systemError == EPERM; }

bool isMountRoot(int folder, const char* name, int flags) noexcept {
    struct ::statx status {};
    return ::statx(folder, name, flags, STATX_TYPE, &status) == 0 &&
           (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

int statusOf(int folder, const char* name, struct ::statx& status) noexcept {
    return ::statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS, &status) == 0 ? 0 : errno;
}

}  // namespace

int obstacleToLeaving(EntryAt entry) {
    const std::string folder = beside(entry, ".");
    struct ::statx own {};
    struct ::statx above {};
    if (const int systemError = statusOf(entry.folder, entry.name, own)) return systemError;
    if (const int systemError = statusOf(entry.folder, folder.c_str(), above)) return systemError;
    if (!mayBeWritten(entry.folder, folder.c_str())) return errno;
    // Its entry for the folder above it changes too.
    if (S_ISDIR(own.stx_mode) && !mayBeWritten(entry.folder, entry.name)) return errno;
    if ((own.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) return EBUSY;
    if (((own.stx_attributes | above.stx_attributes) & unchangeable) != 0) return EPERM;
    const uid_t user = ::geteuid();
    const bool isGuarded = (above.stx_mode & S_ISVTX) != 0 && user != 0 && user != own.stx_uid;
    return isGuarded && user != above.stx_uid ? EPERM : 0;
}

bool isMountPoint(int folder) noexcept { return isMountRoot(folder, "", AT_EMPTY_PATH); }

bool isMountPoint(EntryAt entry) noexcept {
    return isMountRoot(entry.folder, entry.name, AT_SYMLINK_NOFOLLOW);
}

Side sideOfFailedRenaming(EntryAt source, int systemError) {
    constexpr int refusals[] = {EACCES, EPERM, EBUSY, ENOENT};
    const bool isRefusal =
        std::find(std::begin(refusals), std::end(refusals), systemError) != std::end(refusals);
    if (!isRefusal) return destinationSide;
    // Another obstacle than the one that was told may stand there as well, and is not what it failed for.
    const int obstacle = obstacleToLeaving(source);
    const bool isTheSame =
        obstacle == systemError || (meansForbidden(obstacle) && meansForbidden(systemError));
    return isTheSame ? sourceSide : destinationSide;
}

}  // namespace korvex::runtime::storage::posix
