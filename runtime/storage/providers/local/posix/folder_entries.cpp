// The entries of an open folder, read in large pieces.
#include "runtime/storage/providers/local/posix/folder_entries.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace korvex::runtime::storage::posix {

namespace {

/// File systems that do not tell the kind with the name are asked for it.
EntryKind kindOf(int folder, const dirent64& entry) noexcept {
    if (entry.d_type != DT_UNKNOWN) return kindOfMode(static_cast<mode_t>(DTTOIF(entry.d_type)));
    struct ::stat status {};
    if (::fstatat(folder, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) != 0) return EntryKind::file;
    return kindOfMode(status.st_mode);
}

}  // namespace

EntryKind kindOfMode(mode_t mode) noexcept {
    if (S_ISDIR(mode)) return EntryKind::folder;
    if (S_ISLNK(mode)) return EntryKind::link;
    return S_ISREG(mode) ? EntryKind::file : EntryKind::special;
}

FolderEntries::FolderEntries(int folder)
    : folder_(folder), buffer_(std::make_unique_for_overwrite<std::array<std::byte, bufferSize>>()) {
    rewind();
}

void FolderEntries::rewind() {
    ::lseek(folder_, 0, SEEK_SET);
    position_ = end_ = 0;
}

bool FolderEntries::next(FolderEntry& entry, int& systemError) {
    systemError = 0;
    while (true) {
        if (position_ == end_ && !fill(systemError)) return false;
        const auto* const found = reinterpret_cast<const dirent64*>(buffer_->data() + position_);
        position_ += found->d_reclen;
        const std::string_view name = found->d_name;
        if (name == "." || name == "..") continue;
        entry = {found->d_name, kindOf(folder_, *found), found->d_ino};
        return true;
    }
}

bool FolderEntries::fill(int& systemError) {
    const ssize_t count = ::getdents64(folder_, buffer_->data(), buffer_->size());
    if (count < 0) systemError = errno;
    if (count <= 0) return false;
    position_ = 0;
    end_ = static_cast<std::size_t>(count);
    return true;
}

}  // namespace korvex::runtime::storage::posix
