// How a transfer or removal tells how far it is, and how it notices that the user wants it to stop.
//
// A host sets an observer; without one nothing is counted. Between files, and on the way through a large one,
// the storage layer looks at the pending-interrupt flag (runtime/interpreter/interrupts.h): it stops there,
// leaves no file in part, and raises `vfs::Exception` with `unknownError` and the context "interrupted". The
// flag stays pending.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string_view>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

/// How far a transfer or removal is. What is known grows while folders are looked into. Of a large file it is
/// told on the way, in steps of some MiB.
struct Progress {
    std::uint64_t itemsDone = 0;
    std::uint64_t itemsKnown = 0;
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesKnown = 0;
    /// What was finished last, or the large file under way.
    foundation::storage::vfs::AbsoluteIRI location;
};

/// Called from the threads that do the work, one call at a time. Must not call the storage layer.
class ProgressObserver {
public:
    virtual ~ProgressObserver() = default;
    virtual void progressed(const Progress& progress) = 0;
};

/// Replaces the observer (null: none) and hands back the earlier one. To be called while nothing runs.
ProgressObserver* setProgressObserver(ProgressObserver* observer);
ProgressObserver* progressObserver() noexcept;

/// The context text of the exception that an interrupt raises.
inline constexpr std::u16string_view interruptedContext = u"interrupted";

/// Raises `vfs::Exception` when an interrupt is pending.
void stopIfInterrupted(const foundation::storage::vfs::AbsoluteIRI& location);

/// The counters of one operation. Safe for several threads; does nothing when no observer is set.
class ProgressCounter {
public:
    ProgressCounter();

    /// Whether somebody wants to know.
    bool isWatched() const noexcept { return observer_ != nullptr; }
    void found(std::uint64_t items, std::uint64_t bytes) noexcept;
    /// Makes the location only when somebody wants to know.
    template <class MakeLocation>
    void finished(std::uint64_t items, std::uint64_t bytes, const MakeLocation& makeLocation) {
        if (observer_ != nullptr) report(items, bytes, makeLocation());
    }

private:
    void report(std::uint64_t items, std::uint64_t bytes, foundation::storage::vfs::AbsoluteIRI location);

    ProgressObserver* const observer_;
    std::mutex mutex_;
    std::atomic<std::uint64_t> itemsKnown_{0};
    std::atomic<std::uint64_t> bytesKnown_{0};
    std::uint64_t itemsDone_ = 0;
    std::uint64_t bytesDone_ = 0;
};

/// Tells of an operation that is done and consisted of this one item.
template <class MakeLocation>
void tellOfOneItem(const MakeLocation& makeLocation) {
    ProgressCounter counter;
    counter.found(1, 0);
    counter.finished(1, 0, makeLocation);
}

}  // namespace korvex::runtime::storage
