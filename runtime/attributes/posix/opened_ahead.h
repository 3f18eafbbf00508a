// Files of a list, opened before their turn.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "runtime/attributes/posix/open_folders.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::attributes::posix {

/// Another thread opens the files that come next, without any access and a bounded number of them: that
/// changes nothing about them. They are handed over in batches, since to wake somebody costs more than to
/// open a file.
class OpenedAhead {
public:
    using FileDescriptor = storage::posix::FileDescriptor;

    /// From the file with that number on. The list lives as long. Raises `std::system_error` when there is no
    /// thread to be had.
    OpenedAhead(const std::u16string& named, const std::vector<std::u16string>& list, std::size_t first);
    ~OpenedAhead();
    OpenedAhead(const OpenedAhead&) = delete;
    OpenedAhead& operator=(const OpenedAhead&) = delete;

    /// The file with that number, numbers rising; of a link, the link. None where it could not be opened:
    /// then the caller tries it, and meets the reason.
    FileDescriptor take(std::size_t number);

private:
    struct Batch {
        std::size_t first = 0;
        std::vector<FileDescriptor> files;
        std::size_t end() const noexcept { return first + files.size(); }
    };

    void work();
    FileDescriptor open(std::size_t number) noexcept;
    bool takeBatch();

    const std::vector<std::u16string>& list_;
    const std::size_t batchSize_;
    OpenFolders folders_;
    Batch current_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Batch> ready_;
    std::size_t next_;
    bool isDone_ = false;
    bool isStopped_ = false;
    std::thread thread_;
};

}  // namespace korvex::runtime::attributes::posix
