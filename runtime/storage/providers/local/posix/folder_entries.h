// The entries of an open folder, read in large pieces.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <memory>

namespace korvex::runtime::storage::posix {

/// `special` is a device, pipe or socket.
enum class EntryKind : unsigned char { folder, file, link, special };

EntryKind kindOfMode(mode_t mode) noexcept;

struct FolderEntry {
    const char* name;  ///< valid until the next entry is read
    EntryKind kind;
    ino_t inode;
};

/// Reads the entries of a folder but for `.` and `..`, from its start. The descriptor stays the caller's.
class FolderEntries {
public:
    explicit FolderEntries(int folder);
    /// False at the end, with 0 or the errno in `systemError`.
    bool next(FolderEntry& entry, int& systemError);
    /// Begins anew.
    void rewind();

private:
    static constexpr std::size_t bufferSize = 32 * 1024;

    bool fill(int& systemError);

    int folder_;
    std::unique_ptr<std::array<std::byte, bufferSize>> buffer_;
    std::size_t position_ = 0;
    std::size_t end_ = 0;
};

}  // namespace korvex::runtime::storage::posix
