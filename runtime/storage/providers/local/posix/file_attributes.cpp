// What a copy keeps of a file or folder beside its content.
#include "runtime/storage/providers/local/posix/file_attributes.h"

#include <sys/statvfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace korvex::runtime::storage::posix {

namespace {

constexpr const char* listForNewEntries = "system.posix_acl_default";

/// Attributes that only the system itself may set, or that this file system does not know, are left out.
bool mayBeLeftOut(int systemError) noexcept {
    return systemError == ENOTSUP || systemError == EPERM || systemError == EACCES || systemError == EINVAL;
}

/// Some file systems have little room for attributes, and call it a full disk when that is used up.
bool isFull(int file, std::size_t bytes) noexcept {
    struct ::statvfs status {};
    if (::fstatvfs(file, &status) != 0) return true;
    return status.f_bavail <= bytes / std::max<unsigned long>(status.f_frsize, 1);
}

bool doesNotFit(int systemError, int file, std::size_t bytes) noexcept {
    return systemError == E2BIG || systemError == ERANGE || (systemError == ENOSPC && !isFull(file, bytes));
}

Failure copyAttribute(int source, int destination, const char* name, std::vector<char>& value) {
    // Asked with an empty buffer, the system would tell the size and hand out nothing.
    if (value.empty()) value.resize(256);
    ssize_t size = ::fgetxattr(source, name, value.data(), value.size());
    while (size < 0 && errno == ERANGE) {
        size = ::fgetxattr(source, name, nullptr, 0);
        if (size < 0) break;
        value.resize(static_cast<std::size_t>(size) + 64);
        size = ::fgetxattr(source, name, value.data(), value.size());
    }
    if (size < 0) return {errno == ENODATA || mayBeLeftOut(errno) ? 0 : errno, sourceSide};
    const auto bytes = static_cast<std::size_t>(size);
    if (::fsetxattr(destination, name, value.data(), bytes, 0) == 0) return {};
    const int systemError = errno;
    const bool isLeftOut = mayBeLeftOut(systemError) || doesNotFit(systemError, destination, bytes);
    return {isLeftOut ? 0 : systemError, destinationSide};
}

/// As `listExtendedAttributes`, 0 or the errno.
int attributeNames(int file, std::vector<char>& names) {
    std::array<char, 512> few;
    ssize_t size = ::flistxattr(file, few.data(), few.size());
    if (size >= 0) {
        names.assign(few.data(), few.data() + size);
        return 0;
    }
    while (size < 0 && errno == ERANGE) {
        size = ::flistxattr(file, nullptr, 0);
        if (size < 0) break;
        names.resize(static_cast<std::size_t>(size) + 256);
        size = ::flistxattr(file, names.data(), names.size());
    }
    if (size < 0) return errno;
    names.resize(static_cast<std::size_t>(size));
    return 0;
}

/// Calls with each name until that gives false.
template <class Use>
void forEachName(const std::vector<char>& names, const Use& use) {
    for (const char* name = names.data(); name < names.data() + names.size();
         name += std::string_view(name).size() + 1) {
        if (!use(name)) return;
    }
}

bool contains(const std::vector<char>& names, std::string_view wanted) noexcept {
    bool isFound = false;
    forEachName(names, [&](const char* name) { return !(isFound = name == wanted); });
    return isFound;
}

/// Looking is cheaper than removing in vain, which on some file systems is a change.
int removeAttribute(int file, const char* name) noexcept {
    if (::fgetxattr(file, name, nullptr, 0) < 0 || ::fremovexattr(file, name) == 0) return 0;
    return errno == ENODATA || mayBeLeftOut(errno) ? 0 : errno;
}

}  // namespace

Failure listExtendedAttributes(int source, CopyAbilities& abilities, std::vector<char>& names) {
    names.clear();
    if (!abilities.hasExtendedAttributes.load(std::memory_order_relaxed)) return {};
    const int systemError = attributeNames(source, names);
    if (systemError == 0) return {};
    names.clear();
    if (systemError == ENOTSUP) abilities.hasExtendedAttributes.store(false, std::memory_order_relaxed);
    return mayBeLeftOut(systemError) ? Failure{} : Failure{systemError, sourceSide};
}

Failure copyExtendedAttributes(int source, int destination, const std::vector<char>& names,
                               struct ::stat& made) {
    if (names.empty()) return {};
    thread_local std::vector<char> value;
    Failure failure;
    forEachName(names, [&](const char* name) {
        failure = copyAttribute(source, destination, name, value);
        return !failure;
    });
    if (failure) return failure;
    // An access list has changed the permission bits.
    return {::fstat(destination, &made) == 0 ? 0 : errno, destinationSide};
}

mode_t bitsWithoutLostList(mode_t source, int destination, const std::vector<char>& names) noexcept {
    const bool isLost =
        contains(names, accessListName) && ::fgetxattr(destination, accessListName, nullptr, 0) < 0;
    return isLost ? source & (~mode_t{S_IRWXG} | ((source & S_IRWXO) << 3)) : source;
}

bool handsAccessListsOn(int folder) noexcept {
    return ::fgetxattr(folder, listForNewEntries, nullptr, 0) >= 0 || (errno != ENODATA && errno != ENOTSUP);
}

int removeInheritedAccessLists(int made, mode_t mode, const std::vector<char>& names) noexcept {
    int systemError = contains(names, accessListName) ? 0 : removeAttribute(made, accessListName);
    if (systemError == 0 && S_ISDIR(mode) && !contains(names, listForNewEntries))
        systemError = removeAttribute(made, listForNewEntries);
    return systemError;
}

void giveOwner(int destination, const struct ::stat& wanted, struct ::stat& made) noexcept {
    if (wanted.st_uid == made.st_uid && wanted.st_gid == made.st_gid) return;
    constexpr auto unchanged = static_cast<uid_t>(-1);
    if (::fchown(destination, wanted.st_uid, wanted.st_gid) == 0) {
        made.st_uid = wanted.st_uid;
        made.st_gid = wanted.st_gid;
    } else if (::fchown(destination, unchanged, wanted.st_gid) == 0) {
        made.st_gid = wanted.st_gid;
    }
}

int copyModeAndTimes(const struct ::stat& sourceStatus, int destination, const struct ::stat& made) noexcept {
    const bool hasOwner = sourceStatus.st_uid == made.st_uid && sourceStatus.st_gid == made.st_gid;
    const mode_t bits = sourceStatus.st_mode & (hasOwner ? 07777U : 01777U);
    const bool hasBits = (made.st_mode & 07777U) == bits;
    if (!hasBits && ::fchmod(destination, bits) != 0 && !meansNotKept(errno)) return errno;
    const struct timespec times[2] = {{0, UTIME_OMIT}, sourceStatus.st_mtim};
    return ::futimens(destination, times) == 0 || meansNotKept(errno) ? 0 : errno;
}

bool meansNotKept(int systemError) noexcept {
    return systemError == EPERM || systemError == EOPNOTSUPP || systemError == ENOSYS;
}

}  // namespace korvex::runtime::storage::posix
