// Entries by name in an open folder.
#include "runtime/storage/providers/local/posix/entry_at.h"

#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>
#include <string_view>
#include <utility>

#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"

namespace korvex::runtime::storage::posix {

namespace {

bool isSameTime(const struct ::timespec& a, const struct ::timespec& b) noexcept {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

std::string_view lastComponentOf(EntryAt entry) noexcept {
    const std::string_view path = entry.name;
    return path.substr(path.rfind('/') + 1);
}

/// Where capital and small letters are the same, a file is found under names that no listing shows.
int areBothListed(EntryAt folder, std::string_view first, std::string_view second, bool& areBoth) {
    const FileDescriptor opened(::openat(folder.folder, folder.name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return errno;
    FolderEntries entries(opened.get());
    FolderEntry entry{};
    int systemError = 0;
    int found = 0;
    while (found < 2 && entries.next(entry, systemError))
        found += entry.name == first || entry.name == second;
    areBoth = found == 2;
    return systemError;
}

}  // namespace

bool isSameFile(const struct ::stat& a, const struct ::stat& b) noexcept {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isUnchanged(const struct ::stat& before, const struct ::stat& after) noexcept {
    return isSameFile(before, after) && before.st_size == after.st_size &&
           isSameTime(before.st_mtim, after.st_mtim) && isSameTime(before.st_ctim, after.st_ctim);
}

std::string temporaryName() {
    // Random each time: a process that was forked would go on with the numbers of the other one.
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number) number = std::random_device{}();
    std::array<char, 32> digits{};
    ::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(number));
    return std::string(".korvex-") + digits.data() + ".part";
}

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

int isOneEntry(EntryAt a, EntryAt b, bool& isOne) {
    const std::string folders[2] = {beside(a, "."), beside(b, ".")};
    struct ::stat status[2] = {};
    isOne = false;
    if (::fstatat(a.folder, folders[0].c_str(), &status[0], 0) != 0) return errno;
    if (::fstatat(b.folder, folders[1].c_str(), &status[1], 0) != 0) return errno;
    if (!isSameFile(status[0], status[1])) return 0;
    isOne = lastComponentOf(a) == lastComponentOf(b);
    if (isOne) return 0;
    bool areTwo = false;
    const int systemError =
        areBothListed({a.folder, folders[0].c_str()}, lastComponentOf(a), lastComponentOf(b), areTwo);
    isOne = !areTwo;
    return systemError;
}

bool isAtOrBelow(EntryAt inner, EntryAt outer) {
    constexpr int flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    struct ::stat wanted {};
    struct ::stat status {};
    if (::fstatat(outer.folder, outer.name, &wanted, 0) != 0) return false;
    FileDescriptor folder(::openat(inner.folder, inner.name, flags));
    if (!folder) folder = FileDescriptor(::openat(inner.folder, beside(inner, ".").c_str(), flags));
    while (folder && ::fstat(folder.get(), &status) == 0) {
        if (isSameFile(status, wanted)) return true;
        const struct ::stat below = status;
        FileDescriptor above(::openat(folder.get(), "..", flags));
        const bool isTop = !above || ::fstat(above.get(), &status) != 0 || isSameFile(status, below);
        if (isTop) return false;
        folder = std::move(above);
    }
    return false;
}

EndOfLink::EndOfLink(EntryAt link, const struct ::stat* watched)
    : folder_(link.folder), name_(link.name), watched_(watched) {
    int linksLeft = mostLinks;
    systemError_ = follow(linksLeft);
}

EndOfLink::EndOfLink(EntryAt link, const struct ::stat* watched, int& linksLeft)
    : folder_(link.folder), name_(link.name), watched_(watched) {
    systemError_ = follow(linksLeft);
}

int EndOfLink::follow(int& linksLeft) {
    for (bool isFirst = true;; isFirst = false) {
        struct ::stat status {};
        if (::fstatat(folder_, name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            return errno == ENOENT ? 0 : errno;
        if (!isFirst && watched_ != nullptr && isSameFile(status, *watched_)) meetsWatched_ = true;
        if (!S_ISLNK(status.st_mode)) return 0;
        if (linksLeft-- == 0) return ELOOP;
        std::string target = linkTargetOf(entry());
        if (target.empty()) return errno;
        // From the folder that holds the link: so no path becomes longer than the system takes.
        FileDescriptor above(
            ::openat(folder_, beside(entry(), ".").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!above) return errno;
        opened_ = std::move(above);
        folder_ = opened_.get();
        if (leadsThroughWatched(target, linksLeft)) meetsWatched_ = true;
        name_ = std::move(target);
    }
}

/// In front of a name, as a folder or on the way to one.
bool EndOfLink::leadsThroughWatched(const std::string& path, int& linksLeft) const {
    if (watched_ == nullptr) return false;
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        struct ::stat status {};
        const std::string folder = path.substr(0, end);
        if (::fstatat(folder_, folder.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
        if (isSameFile(status, *watched_)) return true;
        const bool isLink = S_ISLNK(status.st_mode);
        if (isLink && EndOfLink({folder_, folder.c_str()}, watched_, linksLeft).meetsWatched()) return true;
    }
    return false;
}

}  // namespace korvex::runtime::storage::posix
