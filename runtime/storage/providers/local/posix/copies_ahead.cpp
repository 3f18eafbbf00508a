// Copies of single files that are made before they are asked for.
#include "runtime/storage/providers/local/posix/copies_ahead.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/place.h"

namespace korvex::runtime::storage::posix {

namespace {

/// So many files may be made ahead; few enough to be taken back at once.
constexpr std::size_t mostAhead = 128;
/// A larger file takes its time without help.
constexpr off_t mostBytes = off_t{1} << 20;
constexpr unsigned mostThreads = 3;

thread_local CopiesAhead* ofThread = nullptr;

}  // namespace

CopiesAhead::CopiesAhead(std::vector<FilePair> files, ReplacementPolicy policy)
    : files_(std::move(files)), policy_(policy), transfer_(policy), states_(files_.size()), made_(mostAhead) {
    // The caller copies too.
    const unsigned threads = std::min(std::max(std::thread::hardware_concurrency(), 1U) - 1, mostThreads);
    threads_.reserve(threads);
    try {
        while (threads_.size() < threads)
            threads_.emplace_back([this] { work(); });
    } catch (const std::exception&) {
        // It goes with fewer.
    }
    ofThread = this;
}

CopiesAhead::~CopiesAhead() {
    withdraw();
    ofThread = nullptr;
}

CopiesAhead* CopiesAhead::ofThisThread() noexcept { return ofThread; }

bool CopiesAhead::takeNext(const AbsoluteIRI& source, const AbsoluteIRI& destination,
                           ReplacementPolicy policy, std::uint64_t& bytes) {
    Lock lock(mutex_);
    passOver();
    const bool isExpected = !isStopped_ && next_ < files_.size() && policy == policy_ &&
                            files_[next_].first == source && files_[next_].second == destination;
    if (isExpected && !isPlainFile(next_)) {
        // All before it have been taken. None behind it is begun before the next one is asked for: this one
        // may lead to what they are to become.
        ++next_;
        return false;
    }
    const State outcome = isExpected ? outcomeOf(next_, lock) : State::failed;
    const bool isMade = outcome == State::made && isStillThere(next_);
    if (isMade || (outcome == State::tooLarge && isVacant(next_))) {
        bytes = static_cast<std::uint64_t>(made_[next_ % mostAhead].st_size);
        ++next_;
        // What was made while a large file was copied has to be looked at again when its turn comes.
        if (!isMade) isDoubtful_ = true;
        lock.unlock();
        changed_.notify_one();
        return isMade;
    }
    lock.unlock();
    withdraw();
    return false;
}

/// The files that were left to the ordinary way are done with.
void CopiesAhead::passOver() {
    if (unclaimed_ >= next_) return;
    unclaimed_ = next_;
    changed_.notify_all();
}

/// Two names may be one to the file system: a file that was copied in the ordinary way meanwhile may have
/// taken the place of one that was made ahead.
bool CopiesAhead::isStillThere(std::size_t index) const {
    if (!isDoubtful_) return true;
    struct ::stat status {};
    const Place place(files_[index].second);
    return ::fstatat(place.folder(), place.name(), &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           isUnchanged(made_[index % mostAhead], status);
}

/// Whether nothing stands at the destination, no link either.
bool CopiesAhead::isVacant(std::size_t index) const {
    struct ::stat status {};
    const Place place(files_[index].second);
    return ::fstatat(place.folder(), place.name(), &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
}

/// Waits for a file that another thread has begun; not idly, as long as there is another one to copy.
CopiesAhead::State CopiesAhead::outcomeOf(std::size_t index, Lock& lock) {
    while (states_[index] == State::waiting || states_[index] == State::underWay) {
        std::size_t another = 0;
        if (!claim(another)) {
            changed_.wait(lock);
            continue;
        }
        lock.unlock();
        copy(another);
        lock.lock();
    }
    return states_[index];
}

bool CopiesAhead::claim(std::size_t& index) {
    const bool mayClaim =
        unclaimed_ < files_.size() && unclaimed_ < next_ + mostAhead && isPlainFile(unclaimed_);
    if (!mayClaim) return false;
    index = unclaimed_++;
    states_[index] = State::underWay;
    return true;
}

bool CopiesAhead::isPlainFile(std::size_t index) const noexcept {
    return files_[index].first.parts().isKnownFile;
}

void CopiesAhead::work() {
    Lock lock(mutex_);
    while (!isStopped_ && unclaimed_ < files_.size()) {
        std::size_t index = 0;
        if (!claim(index)) {
            changed_.wait(lock);
            continue;
        }
        lock.unlock();
        copy(index);
        lock.lock();
    }
}

/// Without the lock, for a file that was claimed.
void CopiesAhead::copy(std::size_t index) {
    struct ::stat made {};
    State outcome = State::failed;
    try {
        const Place from(files_[index].first);
        const Place to(files_[index].second);
        const Failure failure = transfer_.copyOntoNothing(from.entry(), to.entry(), mostBytes, made);
        if (!failure) outcome = State::made;
        if (failure.systemError == EFBIG) outcome = State::tooLarge;
    } catch (const std::exception&) {
        // Left to the ordinary way, which says what is the matter.
    }
    {
        const Lock lock(mutex_);
        states_[index] = outcome;
        made_[index % mostAhead] = made;
    }
    changed_.notify_all();
}

bool CopiesAhead::withdraw() {
    {
        const Lock lock(mutex_);
        isStopped_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
    threads_.clear();
    const bool wasBegun = next_ < unclaimed_;
    for (; next_ < unclaimed_; ++next_)
        if (states_[next_] == State::made) takeBack(next_);
    return wasBegun;
}

/// Unless somebody has changed it, or put another one in its place.
void CopiesAhead::takeBack(std::size_t index) noexcept {
    try {
        const Place place(files_[index].second);
        struct ::stat now {};
        const bool isThere = ::fstatat(place.folder(), place.name(), &now, AT_SYMLINK_NOFOLLOW) == 0;
        if (isThere && isUnchanged(made_[index % mostAhead], now))
            ::unlinkat(place.folder(), place.name(), 0);
    } catch (const std::exception&) {
        // It stays, whole.
    }
}

}  // namespace korvex::runtime::storage::posix
