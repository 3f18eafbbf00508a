// Files that are read whole and replaced whole, by several processes.
//
// Paths are native. Every function raises `std::runtime_error` with the system's words (UTF-8).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::runtime::configuration {

/// What tells one content of a file from another without reading it.
struct FileStamp {
    std::uint64_t disk = 0;
    std::uint64_t number = 0;  ///< of the file on its disk
    std::uint64_t bytes = 0;
    std::int64_t changed = 0;  ///< in the system's own unit and epoch

    bool operator==(const FileStamp&) const = default;
};

struct WholeFile {
    std::string content;
    FileStamp stamp;
};

/// Nothing when there is no such file. Raises for what is there and is no regular file.
std::optional<WholeFile> readWholeFile(const std::u16string& path);

/// Nothing when there is no such file.
std::optional<FileStamp> stampOfFile(const std::u16string& path);

/// The words when the user interrupts the waiting for a process that has the right to change a file.
inline constexpr const char* interruptedWaiting = "Interrupted while waiting for another process";

/// The right to change one file, and no other process, nor another object of this one, has it meanwhile. It
/// ends with the object, and with a process that is killed. Everybody who keeps to it is locked out by the
/// file "<name>.lock" beside the file, which stays.
///
/// Where the path is a link, all of this is about the file that it leads to; the link stays as it is.
class LockedFile {
public:
    /// Waits for the right; a pending interrupt ends the waiting with `interruptedWaiting`, and stays
    /// pending. Makes the folder when it is missing, for the user alone.
    explicit LockedFile(const std::u16string& path);
    ~LockedFile();
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

    /// Makes this the content, in a file for the user alone, on the disk when it returns. Whenever somebody
    /// looks, and if the process is killed or the power fails, the file is the old or the new one. A failure
    /// leaves the old one, but for a disk that fails to confirm the last step: then it is either. Refuses to
    /// replace a file that may not be written, and what is no regular file. Every replacement has a stamp of
    /// its own.
    FileStamp replaceWith(std::string_view content);

    /// Gives the file another name, "<name>.damaged-1" or the first number that is free, and gives that path.
    std::u16string setAside();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace korvex::runtime::configuration
