// POSIX: what the files of this folder share: errors, paths in bytes, stamps.
#pragma once

#include <sys/stat.h>

#include <string>

#include "runtime/configuration/whole_file.h"

namespace korvex::runtime::configuration::posix {

[[noreturn]] void raiseSystemError(int error);

/// Raises when no file on this disk can be named so.
std::string bytesOf(const std::u16string& path);

FileStamp stampOf(const struct ::stat& status) noexcept;

/// Raises for a folder, device, pipe or socket: these are not read and not replaced.
void requireRegularFile(const struct ::stat& status);

}  // namespace korvex::runtime::configuration::posix
