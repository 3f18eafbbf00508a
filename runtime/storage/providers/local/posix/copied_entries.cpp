// What was copied of a tree that is to go from its source.
#include "runtime/storage/providers/local/posix/copied_entries.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <string_view>

#include "runtime/storage/providers/local/posix/clock_step.h"

namespace korvex::runtime::storage::posix {

namespace {

/// How often an entry may change at the very moment at which it is looked at.
constexpr int mostLooks = 3;

std::size_t hashOf(std::string_view text) noexcept { return std::hash<std::string_view>{}(text); }

}  // namespace

void CopiedEntries::add(const TreeFolder& folder, int handle, const std::string& name) {
    Entry entry{keyOf(folder, name), {}};
    for (int looks = 0; looks < mostLooks; ++looks) {
        if (look(handle, name, entry.stamp) != 0) return;
        const Instant changed = entry.stamp.attributesChanged;
        if (!awaitClockStep({changed.seconds, changed.nanoseconds})) return put(entry);
    }
}

void CopiedEntries::addFolder(const TreeFolder& folder) {
    Entry entry{keyOf(*folder.parent(), folder.name()), {}};
    entry.stamp.device = folder.status.st_dev;
    entry.stamp.inode = folder.status.st_ino;
    put(entry);
}

void CopiedEntries::close() {
    std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
}

CopiedState CopiedEntries::stateOf(const TreeFolder& folder, int handle, const std::string& name,
                                   int& systemError) const {
    Stamp now;
    systemError = look(handle, name, now);
    if (systemError == ENOENT) {
        systemError = 0;
        return CopiedState::gone;
    }
    const Entry* const copied = systemError == 0 ? find(keyOf(folder, name)) : nullptr;
    return copied != nullptr && isSame(copied->stamp, now) ? CopiedState::asCopied : CopiedState::different;
}

bool CopiedEntries::hasFolder(const TreeFolder& folder) const {
    const Entry* const copied = find(keyOf(*folder.parent(), folder.name()));
    return copied != nullptr && copied->stamp.device == folder.status.st_dev &&
           copied->stamp.inode == folder.status.st_ino;
}

CopiedEntries::Key CopiedEntries::keyOf(const TreeFolder& folder, const std::string& name) noexcept {
    return {folder.status.st_dev, folder.status.st_ino, hashOf(name)};
}

int CopiedEntries::look(int handle, const std::string& name, Stamp& stamp) {
    struct ::stat status {};
    if (::fstatat(handle, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    stamp = {.device = status.st_dev,
             .inode = status.st_ino,
             .kind = status.st_mode & S_IFMT,
             .size = status.st_size,
             .changed = {status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
             .attributesChanged = {status.st_ctim.tv_sec, status.st_ctim.tv_nsec},
             .hasOtherNames = status.st_nlink > 1};
    if (!S_ISLNK(status.st_mode)) return 0;
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(handle, name.c_str(), target.data(), target.size());
    if (length < 0) return errno;
    stamp.linkTarget = hashOf({target.data(), static_cast<std::size_t>(length)});
    return 0;
}

bool CopiedEntries::isSame(const Stamp& copied, const Stamp& now) noexcept {
    // Of a file with several names the first one that goes changes the attributes of the others.
    const bool areAttributesSame = copied.attributesChanged == now.attributesChanged || copied.hasOtherNames;
    return copied.device == now.device && copied.inode == now.inode && copied.kind == now.kind &&
           copied.size == now.size && copied.changed == now.changed && areAttributesSame &&
           copied.linkTarget == now.linkTarget;
}

const CopiedEntries::Entry* CopiedEntries::find(const Key& key) const noexcept {
    const auto found =
        std::lower_bound(entries_.begin(), entries_.end(), key,
                         [](const Entry& entry, const Key& wanted) { return entry.key < wanted; });
    return found != entries_.end() && found->key == key ? &*found : nullptr;
}

void CopiedEntries::put(const Entry& entry) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(entry);
}

}  // namespace korvex::runtime::storage::posix
