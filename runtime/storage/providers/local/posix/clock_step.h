// Changes that times do not tell apart: the clock from which a file system takes its times goes in steps.
#pragma once

#include <time.h>

namespace korvex::runtime::storage::posix {

/// For a file that says that it changed at that time. False when a change that is still to come will show;
/// otherwise waits until that is so, and the file is to be looked at again. That takes some milliseconds, up
/// to two seconds where the file system keeps whole seconds; a pending interrupt ends the waiting.
bool awaitClockStep(const struct ::timespec& changed) noexcept;

}  // namespace korvex::runtime::storage::posix
