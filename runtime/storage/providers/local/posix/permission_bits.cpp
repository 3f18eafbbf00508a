// The permission bits of a file that is open.
#include "runtime/storage/providers/local/posix/permission_bits.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace korvex::runtime::storage::posix {

namespace {

#if defined(SYS_fchmodat2)
constexpr long fchmodat2 = SYS_fchmodat2;
#elif defined(__linux__) && ((defined(__x86_64__) && defined(__LP64__)) || defined(__aarch64__))
constexpr long fchmodat2 = 452;  // younger than these headers
#else
constexpr long fchmodat2 = -1;  // no call at all
#endif

}  // namespace

int changeBits(int file, mode_t bits) noexcept {
    if (::syscall(fchmodat2, file, "", bits, AT_EMPTY_PATH) == 0) return 0;
    // Not known to the system, or to what filters its calls.
    const int refused = errno;
    if (refused != ENOSYS && refused != EPERM) return refused;
    std::array<char, 32> path{};
    ::snprintf(path.data(), path.size(), "/proc/self/fd/%d", file);
    if (::chmod(path.data(), bits) == 0) return 0;
    // Open files may have no such names.
    if (errno != ENOENT) return errno;
    return refused == EPERM ? EPERM : EOPNOTSUPP;
}

}  // namespace korvex::runtime::storage::posix
