// Attributes by path: what path and list of paths have in common.
#pragma once

#include <string>
#include <string_view>

#include "platform/storage_vfs.h"

namespace korvex::runtime::attributes::posix {

/// Raises `fl::filesystem::AccessDenied` or `vfs::Exception` for what happened at an absolute path.
[[noreturn]] void raiseAttributeError(int systemError, std::u16string_view path);

/// The location of an absolute path.
foundation::storage::vfs::AbsoluteIRI locationOf(std::u16string_view path);

}  // namespace korvex::runtime::attributes::posix
