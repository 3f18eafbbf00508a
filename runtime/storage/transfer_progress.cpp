// Progress of transfers and removals, and their interruption.
#include "runtime/storage/transfer_progress.h"

#include <utility>

#include "runtime/interpreter/interrupts.h"

namespace korvex::runtime::storage {

namespace vfs = foundation::storage::vfs;

namespace {

ProgressObserver* currentObserver = nullptr;

}  // namespace

ProgressObserver* setProgressObserver(ProgressObserver* observer) {
    return std::exchange(currentObserver, observer);
}

ProgressObserver* progressObserver() noexcept { return currentObserver; }

void stopIfInterrupted(const vfs::AbsoluteIRI& location) {
    if (interpreter::isInterruptPending()) {
        throw vfs::Exception(vfs::unknownError, location, std::u16string(interruptedContext));
    }
}

ProgressCounter::ProgressCounter() : observer_(progressObserver()) {}

void ProgressCounter::found(std::uint64_t items, std::uint64_t bytes) noexcept {
    if (observer_ == nullptr) return;
    itemsKnown_.fetch_add(items, std::memory_order_relaxed);
    bytesKnown_.fetch_add(bytes, std::memory_order_relaxed);
}

void ProgressCounter::report(std::uint64_t items, std::uint64_t bytes, vfs::AbsoluteIRI location) {
    const std::lock_guard lock(mutex_);
    itemsDone_ += items;
    bytesDone_ += bytes;
    observer_->progressed({itemsDone_, itemsKnown_.load(std::memory_order_relaxed), bytesDone_,
                           bytesKnown_.load(std::memory_order_relaxed), std::move(location)});
}

}  // namespace korvex::runtime::storage
