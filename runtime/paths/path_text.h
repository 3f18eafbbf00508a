// Clean-ups of path text and the parts of a path, by the rules of either style.
//
// Like path_style.h: the style is a parameter, lengths count 16-bit units, and nothing here touches a disk.
// What belongs to the root of a path ("/", "C:\", "\\host\share\", "\\?\C:\") no clean-up ever changes.
#pragma once

#include <string>
#include <string_view>

#include "runtime/paths/path_style.h"

namespace korvex::runtime::paths {

/// Units of the root, its separator included; 0 for a relative path. "C:" alone is a root of two units.
std::size_t rootLength(std::u16string_view path, PathStyle style) noexcept;

/// Begins with two separators. Never with the POSIX style.
bool startsWithTwoSeparators(std::u16string_view path, PathStyle style) noexcept;

/// Whether a component of the text is "." or "..".
bool hasDotComponent(std::u16string_view text, PathStyle style) noexcept;

/// Takes the components "." out; a relative path of nothing else becomes ".". One stays in front of a name
/// that would otherwise read as a drive (".\C:a"), here and below.
void removeSingleDots(std::u16string& path, PathStyle style);

/// Takes each ".." out together with the component in front of it, as text: links are not looked at. Above a
/// root there is nothing, so there it just goes; in front of a relative path it stays. A relative path of
/// which nothing is left becomes ".".
void resolveDoubleDots(std::u16string& path, PathStyle style);

/// Makes one separator of several, behind the root.
void foldDoubledSeparators(std::u16string& path, PathStyle style);

/// Takes all separators off the end, but for the root's.
void dropTrailingSeparators(std::u16string& path, PathStyle style);

/// Windows: "/" becomes "\". POSIX: nothing.
void replaceSlashes(std::u16string& path, PathStyle style);

/// Windows: "\" becomes "/". POSIX: nothing.
void replaceBackslashes(std::u16string& text, PathStyle style);

/// Windows: blanks and dots at the end go, and so does a single dot at the end of any component, as the
/// system itself would take them; the components "." and "..", and paths of the long form, stay. POSIX:
/// nothing.
void dropTrailingDotsAndSpaces(std::u16string& path, PathStyle style);

/// What stands behind the last separator (and behind a drive); empty for a path that ends in a separator.
std::u16string_view fileNameOf(std::u16string_view path, PathStyle style) noexcept;

/// What stands behind the last dot of the file name, without the dot; empty without a dot, and for "." and
/// "..".
std::u16string_view extensionOf(std::u16string_view path, PathStyle style) noexcept;

/// The file name without its last dot and what stands behind it; "." and ".." as they are.
std::u16string_view stemOf(std::u16string_view path, PathStyle style) noexcept;

}  // namespace korvex::runtime::paths
