// How far the copy of one file is, told to the observer of a whole operation.
#pragma once

#include <cstdint>

#include "runtime/storage/providers/local/posix/file_content.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {

/// Counts a file as found when it is made, and as done, with all its bytes, by `finish`. `MakeLocation` makes
/// the file's location when somebody wants to know.
template <class MakeLocation>
class FileProgress : public CopyWatcher {
public:
    FileProgress(ProgressCounter& counter, const MakeLocation& makeLocation)
        : counter_(counter), makeLocation_(makeLocation) {
        counter_.found(1, 0);
    }

    /// For the transfer: null when nobody wants to know.
    CopyWatcher* watcher() noexcept { return counter_.isWatched() ? this : nullptr; }

    /// Once more for a second attempt, which tells nothing until it is further than the one before.
    void begins(off_t size) override {
        attempted_ = 0;
        know(static_cast<std::uint64_t>(size));
    }
    void copied(off_t bytes) override {
        attempted_ += static_cast<std::uint64_t>(bytes);
        if (attempted_ <= told_) return;
        const std::uint64_t more = attempted_ - told_;
        // The file may have grown since it was looked at.
        if (told_ + more > known_) know(told_ + more);
        told_ += more;
        counter_.finished(0, more, makeLocation_);
    }
    void finish() { counter_.finished(1, known_ - told_, makeLocation_); }

private:
    void know(std::uint64_t bytes) {
        counter_.found(0, bytes - known_);
        known_ = bytes;
    }

    ProgressCounter& counter_;
    const MakeLocation& makeLocation_;
    std::uint64_t known_ = 0;
    std::uint64_t told_ = 0;
    std::uint64_t attempted_ = 0;
};

}  // namespace korvex::runtime::storage::posix
