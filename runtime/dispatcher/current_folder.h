// The current folder of the environment. The process's working folder is read once, at the start, and never
// changed.
#pragma once

#include <string>

namespace korvex::runtime::dispatcher {

/// The current folder as a native path, absolute, links resolved. Not checked for existence.
std::u16string currentFolderPath();

/// Whether it is still there.
bool currentFolderExists();

/// Makes an existing folder the current one. Relative paths are taken against the present one. Raises
/// `vfs::Exception`: `resourceNotFound` when nothing is there, `invalidLocation` when it is no folder,
/// `permissionDenied` when it may not be entered, `unsupportedOperation` when it is no local folder;
/// `InvalidIRIException` for an empty text and a location that does not parse; `fl::filesystem::PathNotFound`
/// for a relative path when the present folder is gone. Nothing changes then.
void setCurrentFolderPath(const std::u16string& path);

}  // namespace korvex::runtime::dispatcher
