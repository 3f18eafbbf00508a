// Copies of single files that are made before they are asked for.
//
// The files go to one folder as a rule, and the next one asked for is known: while the caller is busy with
// one, other threads copy the following ones, never more than a bounded number ahead, and only onto nothing.
// The caller helps while it waits. Whatever does not go smoothly is left to the ordinary way, after all that
// was made ahead has been taken back; and nothing is made ahead of a source that may be a link, since it may
// lead to what is still being made. So the outcome is that of one copy after another.
#pragma once

#include <sys/stat.h>

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "runtime/storage/provider.h"
#include "runtime/storage/providers/local/posix/file_transfer.h"

namespace korvex::runtime::storage::posix {

class CopiesAhead : public WorkAhead {
public:
    CopiesAhead(std::vector<FilePair> files, ReplacementPolicy policy);
    ~CopiesAhead() override;
    CopiesAhead(const CopiesAhead&) = delete;
    CopiesAhead& operator=(const CopiesAhead&) = delete;

    /// The one that was made on this thread; null without one.
    static CopiesAhead* ofThisThread() noexcept;

    /// Whether the copy that is asked for is there now; `bytes` is its size. False: it is to be made in the
    /// ordinary way. Unless it is merely too large for help, with nothing at its destination, or its source
    /// is not known to be a plain file, nothing is made ahead any more then.
    bool takeNext(const AbsoluteIRI& source, const AbsoluteIRI& destination, ReplacementPolicy policy,
                  std::uint64_t& bytes);

    /// Takes back what was made ahead, and makes nothing more. Whether anything had been begun.
    bool withdraw();

private:
    enum class State : std::uint8_t { waiting, underWay, made, tooLarge, failed };
    using Lock = std::unique_lock<std::mutex>;

    void work();
    bool claim(std::size_t& index);
    void copy(std::size_t index);
    State outcomeOf(std::size_t index, Lock& lock);
    bool isVacant(std::size_t index) const;
    bool isPlainFile(std::size_t index) const noexcept;
    void passOver();
    bool isStillThere(std::size_t index) const;
    void takeBack(std::size_t index) noexcept;

    const std::vector<FilePair> files_;
    const ReplacementPolicy policy_;
    FileTransfer transfer_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<State> states_;
    /// What was made, of the files from `next_` on; a file has the place of its number modulo their count.
    std::vector<struct ::stat> made_;
    std::size_t next_ = 0;
    std::size_t unclaimed_ = 0;
    bool isStopped_ = false;
    bool isDoubtful_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace korvex::runtime::storage::posix
