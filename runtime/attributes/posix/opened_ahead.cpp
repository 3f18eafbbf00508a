// Files of a list, opened before their turn.
#include "runtime/attributes/posix/opened_ahead.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "runtime/attributes/posix/entry_attributes.h"
#include "runtime/storage/providers/local/posix/open_files.h"

namespace korvex::runtime::attributes::posix {

namespace {

constexpr std::size_t largestBatch = 64;
constexpr std::size_t smallestBatch = 2;
/// With the one that is being worked on and the one that is being made there are four.
constexpr std::size_t mostReady = 2;

}  // namespace

OpenedAhead::OpenedAhead(const std::u16string& named, const std::vector<std::u16string>& list,
                         std::size_t first)
    : list_(list),
      batchSize_(std::clamp(storage::posix::limitOfOpenFiles() / 16, smallestBatch, largestBatch)),
      folders_(named),
      next_(first) {
    thread_ = std::thread([this] { work(); });
}

OpenedAhead::~OpenedAhead() {
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    changed_.notify_one();
    thread_.join();
}

OpenedAhead::FileDescriptor OpenedAhead::take(std::size_t number) {
    while (number >= current_.end())
        if (!takeBatch()) return {};
    return number < current_.first ? FileDescriptor() : std::move(current_.files[number - current_.first]);
}

bool OpenedAhead::takeBatch() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isDone_ || !ready_.empty(); });
    if (ready_.empty()) return false;
    current_ = std::move(ready_.front());
    ready_.pop_front();
    lock.unlock();
    changed_.notify_one();
    return true;
}

void OpenedAhead::work() {
    while (true) {
        Batch batch{next_, {}};
        batch.files.reserve(batchSize_);
        for (; next_ < list_.size() && batch.files.size() < batchSize_; ++next_)
            batch.files.push_back(open(next_));
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isStopped_ || ready_.size() < mostReady; });
        isDone_ = isStopped_ || batch.files.empty();
        if (!isDone_) ready_.push_back(std::move(batch));
        lock.unlock();
        changed_.notify_one();
        if (isDone_) return;
    }
}

OpenedAhead::FileDescriptor OpenedAhead::open(std::size_t number) noexcept {
    try {
        return openWithoutAccess(folders_.entryOf(list_[number]));
    } catch (...) {
        return {};
    }
}

}  // namespace korvex::runtime::attributes::posix
