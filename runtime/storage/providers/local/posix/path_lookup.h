// Questions about one path, for paths of any length.
//
// The system refuses paths of 4096 bytes and more in one call. Longer ones are walked in pieces, each opened
// relative to the one before, with the same result as one call would give.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

enum class Links { follow, tellApart };

/// As `stat` or `lstat`: 0, or the errno. `path` is absolute and holds no NUL.
int statusOf(const std::string& path, Links links, struct ::stat& status) noexcept;

/// As many links as the system itself follows in one path.
inline constexpr int mostLinks = 40;

/// The names between the slashes; empty ones are left out.
std::vector<std::string> componentsOf(std::string_view path);

/// Errors that say: there is nothing of that name, and cannot be.
bool meansNothingThere(int systemError) noexcept;

/// Opens a folder relative to `folder`, links followed, and takes its place; without one, by the whole path.
/// 0, or the errno with `folder` as it was.
int enterFolder(FileDescriptor& folder, const std::string& path) noexcept;

/// Opens a folder, links followed, for looking up names below it. No descriptor and the errno when it cannot.
FileDescriptor openFolderByPath(const std::string& path, int& systemError);

/// The path with links resolved and dots gone, or an empty text and the errno in `systemError`.
std::string canonicalPath(const std::string& path, int& systemError);

}  // namespace korvex::runtime::storage::posix
