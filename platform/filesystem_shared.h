// The services library's small helpers for path text. All go by the platform's path style: elsewhere than on
// Windows a back slash is an ordinary character, and the operations named for Windows do nothing.
#pragma once

#include <string>

namespace filesystemSharedFcns {

/// Whether a component of a path, or of a text with a scheme, is "." or "..". In a text with a scheme a dot
/// counts that is written as a percent escape, too: the location would hold it. Of a web location only the
/// path counts, not what stands behind its first `?` or `#`.
bool containsDotOrDotDotExpression(const std::u16string& text);

bool isPathSeparator(const char16_t& unit) noexcept;

/// Begins with two separators, as a path of the network. False elsewhere.
bool startsWithSlashSlashOnWindows(const std::u16string& text) noexcept;

/// Whether something stands at a native path, links followed; nothing stands at the empty one. Raises
/// `vfs::Exception` when the storage fails and `fl::filesystem::PathNotFound` for a relative path when the
/// current folder is gone.
bool exists(const std::u16string& path);

/// Whether a path, or a text with a scheme, names a link, be its target there or not. A separator at the end
/// does not count. Where nobody can tell, the answer is no, and so it is for a web location, without a look;
/// raises nothing.
bool isSymlink(const std::u16string& text);

/// The clean-ups below change their text in place and leave the root of a path alone.

/// Takes a relative path against the current folder; an absolute one stays. Neither dots nor a separator at
/// the end are touched, and an empty path becomes the current folder. Raises `fl::filesystem::PathNotFound`,
/// and leaves the text as it was, when the current folder is needed and gone.
void relativeToAbsolute(std::u16string& path);

/// Takes all separators off the end.
void trimTrailingSlash(std::u16string& path);

/// "/" becomes "\" on Windows.
void replaceSlashesOnWindows(std::u16string& path);

/// Takes the components "." out.
void handleSingleDots(std::u16string& path);

/// Takes each ".." out together with the component in front of it. Links are not looked at.
void handleDotDots(std::u16string& path);

}  // namespace filesystemSharedFcns
