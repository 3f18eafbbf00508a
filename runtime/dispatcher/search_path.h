// The search path as the host works on it. The module reaches it through `IMainSearchPathManager`.
#pragma once

#include <string>
#include <vector>

#include "platform/storage_vfs.h"
#include "platform/user_exceptions.h"

namespace korvex::runtime::dispatcher {

using PathFolders = std::vector<foundation::storage::vfs::CanonicalAbsoluteIRI>;

/// The folders of the path, in its order, as the configuration folder has them: what another process changes
/// shows with the next question. When they cannot be read, a warning tells so once, and the
/// path stays as this run knows it.
PathFolders searchPath();

/// Puts folders at the front of the path, in their order; one that is on it already moves there. Each text is
/// a path, taken against the current folder, or a text with a scheme. All of them must be folders that exist:
/// otherwise raises `vfs::Exception` (`resourceNotFound`, `invalidLocation` for a file) or what
/// `GetIRIFromString` raises, and changes nothing. The path is on disk when this returns; what kept it from
/// being written comes back in the notification.
foundation::core::except::Notification addToSearchPath(const std::vector<std::u16string>& folders);

/// Takes folders off the path, be they on disk or not. The notification is as
/// `IMainSearchPathManager::removeEntries` gives it. Raises what `GetIRIFromString` raises, and changes
/// nothing then.
foundation::core::except::Notification removeFromSearchPath(const std::vector<std::u16string>& folders);

/// The entries that locations name, by the form that the path lists or by any other that leads there; a
/// location of a folder that is gone is completed from what is left above it. One that names no entry stands
/// in the result in its own form.
PathFolders pathEntriesAt(const std::vector<foundation::storage::vfs::AbsoluteIRI>& locations,
                          const PathFolders& path);

/// Takes entries off the path. The notification is as `IMainSearchPathManager::removeEntries` gives it.
foundation::core::except::Notification removePathEntries(const PathFolders& entries);

/// Makes the path consist of just these folders, there or not.
foundation::core::except::Notification replaceSearchPath(const PathFolders& folders);

/// Where a source file of this name ("solve" or "solve.k") lies: in the current folder, or else in the first
/// folder of the path that has it, by the cached views of the folders. The location, or none.
std::vector<foundation::storage::vfs::AbsoluteIRI> findSourceFile(const std::u16string& name);

}  // namespace korvex::runtime::dispatcher
