// The search-path library's bridges between path text and locations.
#pragma once

#include <string>

#include "platform/storage_vfs.h"

namespace Velquist::PathManagement {

/// The location of a path or of a text with a scheme. A relative path is taken against the current folder;
/// doubled separators and a trailing one go, `.` and `..` stay as they are. Raises `InvalidIRIException` for
/// a text with a scheme that does not parse and for an empty text, `fl::filesystem::PathNotFound` for a
/// relative path when the current folder is gone.
foundation::storage::vfs::AbsoluteIRI GetIRIFromString(const std::u16string& text);

/// The text that the commands show for a location: the native path of a local one, the location's text of any
/// other.
std::u16string GetStringFromIRI(const foundation::storage::vfs::AbsoluteIRI& location);

}  // namespace Velquist::PathManagement
