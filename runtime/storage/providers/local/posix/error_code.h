// The one place that turns an errno into an error code of the storage layer.
#pragma once

#include <string>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage::posix {

/// Stands among the errnos for work that a pending interrupt has stopped.
inline constexpr int interruptedError = -1;  // no errno of any system

foundation::storage::vfs::ErrorCode errorCodeOf(int systemError) noexcept;

/// The operating system's own words in UTF-8.
std::string systemTextOf(int systemError);

/// Raises the `vfs::Exception` for a failed system call, or for an interrupt (as `stopIfInterrupted`).
[[noreturn]] void raiseSystemError(int systemError, const foundation::storage::vfs::AbsoluteIRI& location,
                                   std::u16string context);

}  // namespace korvex::runtime::storage::posix
