// The program's own versions of a few functions of the C library: the linker prefers them.
#include "tests/safety/system_calls.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <utility>

namespace korvex::tests {

namespace {

constexpr std::size_t kindsOfCalls = static_cast<std::size_t>(SystemCall::changeTimes) + 1;

struct Watch {
    std::mutex mutex;
    std::vector<SystemCall> calls;
    std::array<int, kindsOfCalls> errors{};
    std::array<std::function<void()>, kindsOfCalls> work;
    std::array<std::function<void()>, kindsOfCalls> workBehind;
};

Watch watch;
std::atomic<bool> isWatching{false};

std::size_t indexOf(SystemCall call) { return static_cast<std::size_t>(call); }

/// The errno with which the call is to fail, or 0.
int meet(SystemCall call) {
    if (!isWatching.load()) return 0;
    std::function<void()> work;
    int systemError = 0;
    {
        const std::lock_guard lock(watch.mutex);
        watch.calls.push_back(call);
        work = std::exchange(watch.work[indexOf(call)], nullptr);
        systemError = watch.errors[indexOf(call)];
    }
    if (work) work();
    return systemError;
}

void meetSuccessOf(SystemCall call) {
    if (!isWatching.load()) return;
    std::function<void()> work;
    {
        const std::lock_guard lock(watch.mutex);
        work = std::exchange(watch.workBehind[indexOf(call)], nullptr);
    }
    if (work) work();
}

template <class... Arguments>
long callUnlessFailing(SystemCall call, long number, Arguments... arguments) {
    if (const int systemError = meet(call)) {
        errno = systemError;
        return -1;
    }
    const long result = ::syscall(number, arguments...);
    if (result >= 0) meetSuccessOf(call);
    return result;
}

}  // namespace

WatchedCalls::WatchedCalls() {
    watch.calls.clear();
    watch.errors = {};
    watch.work = {};
    watch.workBehind = {};
    isWatching.store(true);
}
WatchedCalls::~WatchedCalls() { isWatching.store(false); }

void WatchedCalls::fail(SystemCall call, int systemError) {
    const std::lock_guard lock(watch.mutex);
    watch.errors[indexOf(call)] = systemError;
}

void WatchedCalls::before(SystemCall call, std::function<void()> work) {
    const std::lock_guard lock(watch.mutex);
    watch.work[indexOf(call)] = std::move(work);
}

void WatchedCalls::after(SystemCall call, std::function<void()> work) {
    const std::lock_guard lock(watch.mutex);
    watch.workBehind[indexOf(call)] = std::move(work);
}

std::vector<SystemCall> WatchedCalls::calls() const {
    const std::lock_guard lock(watch.mutex);
    return watch.calls;
}

std::size_t WatchedCalls::count(SystemCall call) const {
    const std::vector<SystemCall> all = calls();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), call));
}

bool WatchedCalls::isBefore(SystemCall first, SystemCall second) const {
    const std::vector<SystemCall> all = calls();
    const auto found = std::find(all.begin(), all.end(), first);
    return found != all.end() && found < std::find(all.begin(), all.end(), second);
}

}  // namespace korvex::tests

using korvex::tests::SystemCall;

extern "C" {

ssize_t pread(int file, void* buffer, size_t count, off_t offset) {
    return korvex::tests::callUnlessFailing(SystemCall::read, SYS_pread64, file, buffer, count, offset);
}

int close(int file) {
    const bool isForWriting = (::fcntl(file, F_GETFL) & O_ACCMODE) == O_WRONLY;
    const int systemError = korvex::tests::meet(SystemCall::close);
    const long result = ::syscall(SYS_close, file);
    if (systemError == 0 || !isForWriting) return static_cast<int>(result);
    errno = systemError;
    return -1;
}

int fsync(int file) {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::syncFile, SYS_fsync, file));
}

int syncfs(int file) noexcept {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::syncFileSystem, SYS_syncfs, file));
}

int renameat(int folder, const char* name, int newFolder, const char* newName) noexcept {
    return static_cast<int>(
        korvex::tests::callUnlessFailing(SystemCall::rename, SYS_renameat, folder, name, newFolder, newName));
}

int unlinkat(int folder, const char* name, int flags) noexcept {
    return static_cast<int>(
        korvex::tests::callUnlessFailing(SystemCall::remove, SYS_unlinkat, folder, name, flags));
}

int mkdirat(int folder, const char* name, mode_t mode) noexcept {
    return static_cast<int>(
        korvex::tests::callUnlessFailing(SystemCall::makeFolder, SYS_mkdirat, folder, name, mode));
}

int renameat2(int folder, const char* name, int newFolder, const char* newName, unsigned flags) noexcept {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::renameOntoNothing, SYS_renameat2,
                                                             folder, name, newFolder, newName, flags));
}

int linkat(int folder, const char* name, int newFolder, const char* newName, int flags) noexcept {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::giveName, SYS_linkat, folder, name,
                                                             newFolder, newName, flags));
}

ssize_t copy_file_range(int file, off64_t* offset, int newFile, off64_t* newOffset, size_t count,
                        unsigned flags) {
    return korvex::tests::callUnlessFailing(SystemCall::copyRange, SYS_copy_file_range, file, offset, newFile,
                                            newOffset, count, flags);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::setAttribute, SYS_fsetxattr, file,
                                                             name, value, size, flags));
}

int fchmod(int file, mode_t mode) noexcept {
    return static_cast<int>(korvex::tests::callUnlessFailing(SystemCall::changeBits, SYS_fchmod, file, mode));
}

int futimens(int file, const struct ::timespec times[2]) noexcept {
    return static_cast<int>(
        korvex::tests::callUnlessFailing(SystemCall::changeTimes, SYS_utimensat, file, nullptr, times, 0));
}
}
