// Entries that this program makes.
#include "runtime/storage/providers/local/posix/created_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace korvex::runtime::storage::posix {

namespace {

constexpr int createFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;

}  // namespace

RemovedUnlessKept::RemovedUnlessKept(EntryAt entry) noexcept : entry_(entry) {
    isKept_ = ::fstatat(entry_.folder, entry_.name, &made_, AT_SYMLINK_NOFOLLOW) != 0;
}

RemovedUnlessKept::RemovedUnlessKept(EntryAt entry, int file) noexcept : entry_(entry) {
    isKept_ = ::fstat(file, &made_) != 0;
}

RemovedUnlessKept::~RemovedUnlessKept() {
    struct ::stat now {};
    if (isKept_ || ::fstatat(entry_.folder, entry_.name, &now, AT_SYMLINK_NOFOLLOW) != 0) return;
    // Somebody may have put something of theirs in its place.
    if (isSameFile(now, made_)) ::unlinkat(entry_.folder, entry_.name, 0);
}

CreatedFile::CreatedFile(EntryAt entry, mode_t mode) noexcept
    : file_(::openat(entry.folder, entry.name, createFlags, mode)), systemError_(file_ ? 0 : errno) {
    if (file_) removed_.emplace(entry, file_.get());
}

UnnamedFile::UnnamedFile(EntryAt beside, mode_t mode)
    : file_(::openat(beside.folder, posix::beside(beside, ".").c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC,
                     mode)) {
    if (!file_ || ::fstat(file_.get(), &made_) != 0) systemError_ = errno;
}

int UnnamedFile::flush() const noexcept {
    // As closing does it. The file itself has to stay open until it has its name.
    FileDescriptor duplicate(::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0));
    return duplicate ? duplicate.close() : errno;
}

int UnnamedFile::giveName(EntryAt name) const noexcept {
    if (::linkat(file_.get(), "", name.folder, name.name, AT_EMPTY_PATH) == 0) return 0;
    if (errno != ENOENT && errno != EPERM) return errno;
    // An ordinary user has to say it this way.
    std::array<char, 32> path{};
    ::snprintf(path.data(), path.size(), "/proc/self/fd/%d", file_.get());
    return ::linkat(AT_FDCWD, path.data(), name.folder, name.name, AT_SYMLINK_FOLLOW) == 0 ? 0 : errno;
}

}  // namespace korvex::runtime::storage::posix
