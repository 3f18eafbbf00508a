// The system calls by which this program reads, closes, names and removes files, makes folders, and has what
// it wrote reach the disk: watched, and failing when they are told to.
#pragma once

#include <functional>
#include <vector>

namespace korvex::tests {

enum class SystemCall {
    read,
    close,
    syncFile,
    syncFileSystem,
    rename,
    remove,
    makeFolder,
    renameOntoNothing,
    giveName,
    copyRange,
    setAttribute,
    changeBits,
    changeTimes
};

/// Remembers the calls of this program, in order, for as long as it lives. One at a time.
class WatchedCalls {
public:
    WatchedCalls();
    ~WatchedCalls();
    WatchedCalls(const WatchedCalls&) = delete;
    WatchedCalls& operator=(const WatchedCalls&) = delete;

    /// Every call of this kind fails with that errno from now on. A file is closed all the same; only one
    /// that was open for writing fails.
    void fail(SystemCall call, int systemError);
    /// The work is done once, before the next call of this kind.
    void before(SystemCall call, std::function<void()> work);
    /// The same, behind the next call that succeeds.
    void after(SystemCall call, std::function<void()> work);

    std::vector<SystemCall> calls() const;
    std::size_t count(SystemCall call) const;
    /// Whether a call of the first kind came before any of the second.
    bool isBefore(SystemCall first, SystemCall second) const;
};

}  // namespace korvex::tests
