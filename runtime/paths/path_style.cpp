// Path text by the rules of a platform: what is absolute, how texts join, how a path reads as a location.
#include "runtime/paths/path_style.h"

#include <algorithm>

#include "runtime/paths/path_text.h"

namespace korvex::runtime::paths {

namespace {

constexpr std::u16string_view longPrefix = u"\\\\?\\";
constexpr std::u16string_view longUncPrefix = u"\\\\?\\UNC\\";

constexpr bool isAsciiLetter(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}

constexpr char16_t smallLetter(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

/// No doubled separator and none at the end. Nearly every path is so, hence no early way out: the loop
/// without one is several times as fast.
bool isFolded(std::u16string_view path) noexcept {
    unsigned doubled = 0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        doubled |= static_cast<unsigned>(path[i] == u'/') & static_cast<unsigned>(path[i - 1] == u'/');
    }
    return doubled == 0 && (path.size() < 2 || path.back() != u'/');
}

/// The part of an absolute Windows path that names the volume: a drive, a host with a share, or the same
/// behind the prefix of the long form.
std::u16string_view volumeOf(std::u16string_view path) noexcept {
    constexpr PathStyle style = PathStyle::windows;
    std::size_t begin = 0;
    if (path.starts_with(longUncPrefix)) {
        begin = longUncPrefix.size();
    } else if (path.starts_with(longPrefix)) {
        begin = longPrefix.size();
    }
    if (startsWithDrive(path.substr(begin), style)) return path.substr(0, begin + 2);
    if (begin != longUncPrefix.size()) {
        if (!startsWithTwoSeparators(path, style)) return {};
        begin = 2;
    }
    const std::size_t share = path.find_first_of(u"\\/", begin);
    if (share == std::u16string_view::npos) return path;
    return path.substr(0, path.find_first_of(u"\\/", share + 1));
}

/// The two as text, with one separator between them.
std::u16string behind(std::u16string_view base, std::u16string_view path, PathStyle style) {
    std::u16string result;
    result.reserve(base.size() + 1 + path.size());
    result = base;
    if (!path.empty() && !result.empty() && !isSeparator(result.back(), style)) {
        result += preferredSeparator(style);
    }
    return result.append(path);
}

std::u16string joinedOnWindows(std::u16string_view base, std::u16string_view path) {
    constexpr PathStyle style = PathStyle::windows;
    if (!path.empty() && isSeparator(path[0], style)) return std::u16string(volumeOf(base)).append(path);
    if (startsWithDrive(path, style)) {
        const std::u16string_view volume = volumeOf(base);
        const bool sameDrive =
            volume.ends_with(u':') && smallLetter(volume[volume.size() - 2]) == smallLetter(path[0]);
        // What is behind the drive is a name, even if that reads as a drive once more.
        if (sameDrive) return behind(base, path.substr(2), style);
        return std::u16string(path.substr(0, 2)).append(u"\\").append(path.substr(2));
    }
    return std::u16string();
}

}  // namespace

bool startsWithDrive(std::u16string_view path, PathStyle style) noexcept {
    return style == PathStyle::windows && path.size() >= 2 && isAsciiLetter(path[0]) && path[1] == u':';
}

bool isAbsolute(std::u16string_view path, PathStyle style) noexcept {
    if (style == PathStyle::posix) return !path.empty() && path[0] == u'/';
    if (startsWithTwoSeparators(path, style)) return true;
    return startsWithDrive(path, style) && path.size() > 2 && isSeparator(path[2], style);
}

bool isUncPath(std::u16string_view path, PathStyle style) noexcept {
    return startsWithTwoSeparators(path, style) && path.size() > 2 && !isSeparator(path[2], style) &&
           path[2] != u'?' && path[2] != u'.';
}

bool isLongPath(std::u16string_view path, PathStyle style) noexcept {
    return style == PathStyle::windows && path.starts_with(longPrefix);
}

std::u16string nativeForm(std::u16string_view path, bool keepTrailing, PathStyle style) {
    std::u16string native(path);
    if (style == PathStyle::windows) std::replace(native.begin(), native.end(), u'/', u'\\');
    if (!keepTrailing) dropTrailingSeparators(native, style);
    return native;
}

std::u16string joined(std::u16string_view base, std::u16string_view path, PathStyle style) {
    if (path.empty()) return std::u16string(base);
    if (isAbsolute(path, style)) return std::u16string(path);
    if (style == PathStyle::windows) {
        std::u16string special = joinedOnWindows(base, path);
        if (!special.empty()) return special;
    }
    return behind(base, path, style);
}

std::u16string foldSeparators(std::u16string_view path) {
    if (isFolded(path)) return std::u16string(path);

    std::u16string folded;
    folded.reserve(path.size());
    for (const char16_t unit : path) {
        if (unit == u'/' && !folded.empty() && folded.back() == u'/') continue;
        folded += unit;
    }
    if (folded.size() > 1 && folded.back() == u'/') folded.pop_back();
    return folded;
}

LocationPath toLocationPath(std::u16string_view absolutePath, PathStyle style) {
    if (style == PathStyle::posix) return {{}, foldSeparators(absolutePath)};

    std::u16string path = nativeForm(absolutePath, true, style);
    if (path.starts_with(longUncPrefix)) {
        path.replace(0, longUncPrefix.size(), u"\\\\");
    } else if (path.starts_with(longPrefix)) {
        path.erase(0, longPrefix.size());
    }
    std::replace(path.begin(), path.end(), u'\\', u'/');
    if (!path.starts_with(u"//")) return {{}, foldSeparators(u"/" + path)};

    const std::size_t hostEnd = std::min(path.find(u'/', 2), path.size());
    const std::u16string_view behindHost = std::u16string_view(path).substr(hostEnd);
    return {path.substr(2, hostEnd - 2), behindHost.empty() ? u"/" : foldSeparators(behindHost)};
}

std::u16string toNativePath(std::u16string_view host, std::u16string_view path, PathStyle style) {
    if (style == PathStyle::posix) {
        if (host.empty()) return std::u16string(path);
        return std::u16string(u"//").append(host).append(path);
    }
    std::u16string native = nativeForm(path, true, style);
    if (!host.empty()) return std::u16string(u"\\\\").append(host).append(native == u"\\" ? u"" : native);
    const std::u16string_view behindSlash = std::u16string_view(native).substr(1);
    if (!startsWithDrive(behindSlash, style)) return native;
    return behindSlash.size() == 2 ? std::u16string(behindSlash).append(u"\\") : std::u16string(behindSlash);
}

}  // namespace korvex::runtime::paths
