// POSIX: the right to change a file, replacing it and setting it aside. The order of the system calls is what
// makes it safe: content to the disk, then the name, then the folder to the disk.
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "runtime/configuration/posix/system_calls.h"
#include "runtime/configuration/posix/unfinished_file.h"
#include "runtime/interpreter/interrupts.h"
#include "runtime/process/posix/file_descriptor.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::configuration {

using posix::raiseSystemError;
using process::FileDescriptor;

namespace {

constexpr mode_t forTheUserAlone = 0700;
constexpr int mostLinks = 40;  // as many as the system itself follows

struct FolderAndName {
    std::string folder;
    std::string name;
};

FolderAndName split(const std::string& path) {
    const std::size_t separator = path.rfind('/');
    if (separator == std::string::npos) return {".", path};
    return {path.substr(0, separator == 0 ? 1 : separator), path.substr(separator + 1)};
}

void syncFolder(int folder) {
    // Some file systems have no such thing for folders.
    if (::fsync(folder) != 0 && errno != EINVAL) raiseSystemError(errno);
}

FileDescriptor openFolder(const std::string& path) {
    FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) raiseSystemError(errno);
    return folder;
}

void makeFolderWithThoseAbove(const std::string& path) {
    if (::mkdir(path.c_str(), forTheUserAlone) != 0) {
        if (errno == EEXIST) return;  // whether it is a folder turns out when it is opened
        const std::string above = split(path).folder;
        if (errno != ENOENT || above == path) raiseSystemError(errno);
        makeFolderWithThoseAbove(above);
        if (::mkdir(path.c_str(), forTheUserAlone) != 0 && errno != EEXIST) raiseSystemError(errno);
    }
    const FileDescriptor above(::open(split(path).folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (above) syncFolder(above.get());  // one that may be written may still not be opened
}

/// The text of a link; empty when there is none at this path.
std::string linkText(const std::string& path) {
    std::string text(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
    if (length < 0 && errno != EINVAL && errno != ENOENT) raiseSystemError(errno);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
}

/// The path behind a link, and behind the links that it leads to; the file need not be there.
std::string behindLinks(std::string path) {
    for (int links = 0; links <= mostLinks; ++links) {
        const std::string text = linkText(path);
        if (text.empty()) return path;
        path = text.front() == '/' ? text : split(path).folder + '/' + text;
    }
    raiseSystemError(ELOOP);
}

bool isTheSameFile(const struct ::stat& one, const struct ::stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// 0 or the errno.
int lock(int file, int how) noexcept {
    while (::flock(file, how) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

/// Where no thread can be had.
void awaitLockByAsking(int file) {
    constexpr ::timespec step{0, 10'000'000};
    for (;;) {
        const int error = lock(file, LOCK_EX | LOCK_NB);
        if (error == 0) return;
        if (error != EWOULDBLOCK) raiseSystemError(error);
        if (interpreter::isInterruptPending()) throw std::runtime_error(interruptedWaiting);
        ::nanosleep(&step, nullptr);
    }
}

/// Waits in the queue of the system, where nobody is passed over, on a thread of its own: one that waits
/// there cannot be woken. After an interrupt it is left behind, and gives the lock back when it gets it.
void awaitLock(const std::shared_ptr<FileDescriptor>& file) {
    constexpr auto step = std::chrono::milliseconds(10);
    std::promise<int> outcome;
    std::future<int> locked = outcome.get_future();
    try {
        std::thread([file, told = std::move(outcome)]() mutable {
            told.set_value(lock(file->get(), LOCK_EX));
        }).detach();
    } catch (const std::system_error&) {
        return awaitLockByAsking(file->get());
    }
    while (locked.wait_for(step) != std::future_status::ready) {
        if (interpreter::isInterruptPending()) throw std::runtime_error(interruptedWaiting);
    }
    if (const int error = locked.get()) raiseSystemError(error);
}

/// Waits for the lock of a file, and holds it as long as the descriptor is open.
FileDescriptor lockedFileOf(int folder, const std::string& name) {
    const std::string lockName = name + ".lock";
    for (;;) {
        const auto file = std::make_shared<FileDescriptor>(
            ::openat(folder, lockName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
        if (!*file) raiseSystemError(errno);
        const int error = lock(file->get(), LOCK_EX | LOCK_NB);
        if (error == EWOULDBLOCK) {
            awaitLock(file);
        } else if (error != 0) {
            raiseSystemError(error);
        }
        // If somebody has removed the lock file meanwhile, the next one to come would lock a new one.
        struct ::stat locked {};
        struct ::stat named {};
        if (::fstat(file->get(), &locked) != 0) raiseSystemError(errno);
        if (::fstatat(folder, lockName.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
            isTheSameFile(locked, named)) {
            return std::move(*file);
        }
    }
}

/// The status of the file that is to be replaced, or nothing. Raises when it may not be replaced.
std::optional<struct ::stat> replaceable(int folder, const std::string& name) {
    struct ::stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT) return std::nullopt;
        raiseSystemError(errno);
    }
    posix::requireRegularFile(status);
    // A file marked read-only is protected from the superuser too.
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) raiseSystemError(EACCES);
    if (::faccessat(folder, name.c_str(), W_OK, AT_EACCESS) != 0) raiseSystemError(errno);
    return status;
}

/// The present time, but later than that of the file before: two changes within a tick of the system's clock
/// have different stamps then, also where the disk gives the same number to a file again.
::timespec timeBehind(const std::optional<struct ::stat>& before) noexcept {
    constexpr long lastNanosecond = 999'999'999;
    ::timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (!before) return now;
    ::timespec next = before->st_mtim;
    next.tv_nsec = next.tv_nsec == lastNanosecond ? 0 : next.tv_nsec + 1;
    if (next.tv_nsec == 0) ++next.tv_sec;
    const bool isLater =
        now.tv_sec > next.tv_sec || (now.tv_sec == next.tv_sec && now.tv_nsec >= next.tv_nsec);
    return isLater ? now : next;
}

/// 0 or the errno; EEXIST when the new name is taken.
int renameOntoNothing(int folder, const std::string& name, const std::string& newName) noexcept {
    if (::renameat2(folder, name.c_str(), folder, newName.c_str(), RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // This file system cannot promise it in one step. All who keep to the lock are kept out.
    struct ::stat status {};
    if (::fstatat(folder, newName.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    return ::renameat(folder, name.c_str(), folder, newName.c_str()) == 0 ? 0 : errno;
}

}  // namespace

struct LockedFile::State {
    explicit State(FolderAndName file)
        : place(std::move(file)),
          folder(openFolder(place.folder)),
          lock(lockedFileOf(folder.get(), place.name)) {}

    // Closing is not enough: a process that was forked meanwhile has the lock's descriptor open too.
    ~State() { ::flock(lock.get(), LOCK_UN); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    FolderAndName place;
    FileDescriptor folder;
    FileDescriptor lock;
};

LockedFile::LockedFile(const std::u16string& path) {
    const std::string bytes = posix::bytesOf(path);
    makeFolderWithThoseAbove(split(bytes).folder);
    state_ = std::make_unique<State>(split(behindLinks(bytes)));
}

LockedFile::~LockedFile() = default;

FileStamp LockedFile::replaceWith(std::string_view content) {
    const int folder = state_->folder.get();
    const std::optional<struct ::stat> before = replaceable(folder, state_->place.name);
    posix::removeUnfinishedFiles(folder, state_->place.name);
    posix::UnfinishedFile file(folder, state_->place.name);
    file.write(content);
    file.finish(timeBehind(before));
    syncFolder(folder);
    return file.stamp();
}

std::u16string LockedFile::setAside() {
    const int folder = state_->folder.get();
    for (unsigned number = 1;; ++number) {
        const std::string newName = state_->place.name + ".damaged-" + std::to_string(number);
        const int error = renameOntoNothing(folder, state_->place.name, newName);
        if (error == EEXIST) continue;
        if (error != 0) raiseSystemError(error);
        syncFolder(folder);
        return text::fromBytes(state_->place.folder + '/' + newName);
    }
}

}  // namespace korvex::runtime::configuration
