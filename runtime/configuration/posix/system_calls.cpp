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
    constexpr std::uint64_t nanosecondsInASecond = 1'000'000'000;
    // Times beyond the year 2262 wrap around, which does no harm: a stamp only has to differ.
    const std::uint64_t changed = static_cast<std::uint64_t>(status.st_mtim.tv_sec) * nanosecondsInASecond +
                                  static_cast<std::uint64_t>(status.st_mtim.tv_nsec);
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size),
            static_cast<std::int64_t>(changed)};
}

void requireRegularFile(const struct ::stat& status) {
    if (S_ISDIR(status.st_mode)) raiseSystemError(EISDIR);
    if (!S_ISREG(status.st_mode)) throw std::runtime_error("Not a regular file");
}

}  // namespace korvex::runtime::configuration::posix
