// POSIX: errors, paths in bytes, stamps.
#include "runtime/configuration/posix/system_calls.h"

#include <cerrno>
#include <optional>
#include <stdexcept>
#include <system_error>

#include "runtime/text/encoding.h"

namespace korvex::runtime::configuration::posix {

void raiseSystemError(int error) { throw std::runtime_error(std::generic_category().message(error)); }

std::string bytesOf(const std::u16string& path) {
    const std::optional<std::string> bytes = text::toBytes(path);
    if (!bytes || bytes->find('\0') != std::string::npos) raiseSystemError(EINVAL);
    return *bytes;
}

FileStamp stampOf(const struct ::stat& status) noexcept {
    constexpr std::int64_t nanosecondsInASecond = 1'000'000'000;
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            status.st_mtim.tv_sec * nanosecondsInASecond + status.st_mtim.tv_nsec};
}

void requireRegularFile(const struct ::stat& status) {
    if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
    if (!S_ISREG(status.st_mode)) throw std::runtime_error("Not a regular file");
}

}  // namespace korvex::runtime::configuration::posix
