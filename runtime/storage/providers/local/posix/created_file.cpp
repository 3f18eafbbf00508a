// Entries that this program makes.
#include "runtime/storage/providers/local/posix/created_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace korvex::runtime::storage::posix {

namespace {

constexpr int createFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;

/// Which file it is, its kind, permission bits and owner, but not its times: a file whose times have been
/// asked for gets new ones when it is written next, a change of its own on disks with a journal. 0 or the
/// errno.
int askWithoutTimes(int file, struct ::stat& made) noexcept {
    struct ::statx asked {};
    if (::statx(file, "", AT_EMPTY_PATH, STATX_TYPE | STATX_MODE | STATX_UID | STATX_GID | STATX_INO,
                &asked) != 0)
        return errno == ENOSYS && ::fstat(file, &made) == 0 ? 0 : errno;
    made.st_dev = ::makedev(asked.stx_dev_major, asked.stx_dev_minor);
    made.st_ino = asked.stx_ino;
    made.st_mode = asked.stx_mode;
    made.st_uid = asked.stx_uid;
    made.st_gid = asked.stx_gid;
    return 0;
}

}  // namespace

RemovedUnlessKept::RemovedUnlessKept(EntryAt entry) noexcept : entry_(entry) {
    isKept_ = ::fstatat(entry_.folder, entry_.name, &made_, AT_SYMLINK_NOFOLLOW) != 0;
}

RemovedUnlessKept::RemovedUnlessKept(EntryAt entry, int file) noexcept : entry_(entry) {
    isKept_ = askWithoutTimes(file, made_) != 0;
}

RemovedUnlessKept::~RemovedUnlessKept() {
    if (!isKept_ && file_ != nullptr) isKept_ = askWithoutTimes(file_->get(), made_) != 0;
    struct ::stat now {};
    if (isKept_ || ::fstatat(entry_.folder, entry_.name, &now, AT_SYMLINK_NOFOLLOW) != 0) return;
    // Somebody may have put something of theirs in its place.
    if (isSameFile(now, made_)) ::unlinkat(entry_.folder, entry_.name, 0);
}

CreatedFile::CreatedFile(EntryAt entry, mode_t mode) noexcept
    : file_(::openat(entry.folder, entry.name, createFlags, mode)), systemError_(file_ ? 0 : errno) {
    if (file_) removed_.emplace(entry, file_.get());
}

CreatedFile::CreatedFile(EntryAt entry, mode_t mode, const struct ::stat& expected) noexcept
    : file_(::openat(entry.folder, entry.name, createFlags, mode)), systemError_(file_ ? 0 : errno) {
    if (file_) removed_.emplace(entry, file_, expected);
}

UnnamedFile::UnnamedFile(EntryAt beside, mode_t mode)
    : file_(::openat(beside.folder, posix::beside(beside, ".").c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC,
                     mode)) {
    systemError_ = file_ ? askWithoutTimes(file_.get(), made_) : errno;
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
