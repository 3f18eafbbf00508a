// Changes that times do not tell apart: the clock from which a file system takes its times goes in steps.
#pragma once

#include <time.h>

namespace korvex::runtime::storage::posix {

/// For a file that says that it changed at that time. False when a change that is still to come will show;
/// otherwise waits, some milliseconds at most, until that is so, and the file is to be looked at again.
bool awaitClockStep(const struct ::timespec& changed) noexcept;

}  // namespace korvex::runtime::storage::posix
