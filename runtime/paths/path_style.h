// Path text by the rules of a platform.
//
// Every function takes the style, so that the rules of both platforms can be used and tested on either; the
// style of the running platform is `nativeStyle`. All lengths count 16-bit units. Nothing here touches a
// disk.
#pragma once

#include <string>
#include <string_view>

namespace korvex::runtime::paths {

enum class PathStyle { posix, windows };

#ifdef _WIN32
inline constexpr PathStyle nativeStyle = PathStyle::windows;
#else
inline constexpr PathStyle nativeStyle = PathStyle::posix;
#endif

/// The separator that the style writes.
constexpr char16_t preferredSeparator(PathStyle style) noexcept {
    return style == PathStyle::windows ? u'\\' : u'/';
}

/// "/" in both styles, and "\" with the Windows style.
constexpr bool isSeparator(char16_t unit, PathStyle style) noexcept {
    return unit == u'/' || (style == PathStyle::windows && unit == u'\\');
}

/// Begins with a letter and a colon. Never with the POSIX style.
bool startsWithDrive(std::u16string_view path, PathStyle style) noexcept;

/// POSIX: begins with a separator. Windows: a drive with a separator behind it, or two separators.
bool isAbsolute(std::u16string_view path, PathStyle style) noexcept;

/// Two separators and a host. Never with the POSIX style, and not for a path of the long form.
bool isUncPath(std::u16string_view path, PathStyle style) noexcept;

/// Begins with `\\?\`. Never with the POSIX style.
bool isLongPath(std::u16string_view path, PathStyle style) noexcept;

/// The path with the style's own separators. A separator at the end goes when `keepTrailing` is false and the
/// path is more than its root.
std::u16string nativeForm(std::u16string_view path, bool keepTrailing, PathStyle style);

/// `path` behind `base`, with one separator between them; an absolute `path` as it is, an empty one gives
/// `base`. With the Windows style a path with a separator but no drive gets the drive of `base`, and one with
/// a drive but no separator is taken against `base` if that is on the same drive, else against its drive's
/// root.
std::u16string joined(std::u16string_view base, std::u16string_view path, PathStyle style);

/// A local path as the host and path of a location: separators are "/", doubled ones fold, one at the end
/// goes. The drive becomes the first component ("/C:/a").
struct LocationPath {
    std::u16string host;
    std::u16string path;
};
LocationPath toLocationPath(std::u16string_view absolutePath, PathStyle style);

/// The way back.
std::u16string toNativePath(std::u16string_view host, std::u16string_view path, PathStyle style);

/// Folds doubled "/" and drops one at the end, but for "/" alone.
std::u16string foldSeparators(std::u16string_view path);

}  // namespace korvex::runtime::paths
