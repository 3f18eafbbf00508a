// The permission bits of a file that is open: by its name they could become those of another one.
#pragma once

#include <sys/types.h>

namespace korvex::runtime::storage::posix {

/// As `fchmod`, also for a file that is open without any access: 0 or the errno.
int changeBits(int file, mode_t bits) noexcept;

}  // namespace korvex::runtime::storage::posix
