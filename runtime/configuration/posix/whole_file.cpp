// POSIX: files that are read whole.
#include "runtime/configuration/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "runtime/configuration/posix/system_calls.h"
#include "runtime/process/posix/file_descriptor.h"

namespace korvex::runtime::configuration {

using process::FileDescriptor;

std::optional<WholeFile> readWholeFile(const std::u16string& path) {
    // Neither waits for the other end of a pipe nor makes a terminal the process's own.
    const FileDescriptor file(
        ::open(posix::bytesOf(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file && errno == ENOENT) return std::nullopt;
    if (!file) posix::raiseSystemError(errno);
    struct ::stat status {};
    if (::fstat(file.get(), &status) != 0) posix::raiseSystemError(errno);
    posix::requireRegularFile(status);

    // The stamp is older than the content: a change in between is seen as one the next time.
    WholeFile whole{{}, posix::stampOf(status)};
    std::array<char, 16384> block{};
    for (;;) {
        const ssize_t count = ::read(file.get(), block.data(), block.size());
        if (count == 0) return whole;
        if (count > 0) {
            whole.content.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            posix::raiseSystemError(errno);
        }
    }
}

std::optional<FileStamp> stampOfFile(const std::u16string& path) {
    struct ::stat status {};
    if (::stat(posix::bytesOf(path).c_str(), &status) == 0) return posix::stampOf(status);
    if (errno == ENOENT) return std::nullopt;
    posix::raiseSystemError(errno);
}

}  // namespace korvex::runtime::configuration
