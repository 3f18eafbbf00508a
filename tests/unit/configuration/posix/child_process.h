// Processes of tests: they are made by forking, share what is put into shared memory, and end with a status.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <new>

namespace korvex::tests {

/// Runs the work in a process of its own, which ends with status 0, or 1 after an exception (which it
/// prints).
class ChildProcess {
public:
    explicit ChildProcess(const std::function<void()>& work);
    /// Kills it if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    ::pid_t id() const noexcept { return id_; }
    /// Whether it came to an end that nobody has waited for yet.
    bool hasEnded() const;
    /// Waits for its end: its status, or minus the number of the signal that ended it.
    int end();
    /// Kills it and waits for its end, which it gives as `end` does.
    int kill();

private:
    ::pid_t id_ = -1;
};

/// Memory that a process shares with the processes that it makes later.
void* mapSharedMemory(std::size_t bytes);
void unmapSharedMemory(void* memory, std::size_t bytes) noexcept;

/// One object in shared memory.
template <class Value>
class Shared {
public:
    Shared() : value_(new (mapSharedMemory(sizeof(Value))) Value()) {}
    ~Shared() { unmapSharedMemory(value_, sizeof(Value)); }
    Shared(const Shared&) = delete;
    Shared& operator=(const Shared&) = delete;

    Value& operator*() const noexcept { return *value_; }
    Value* operator->() const noexcept { return value_; }

private:
    Value* value_;
};

}  // namespace korvex::tests
