// Path text by the rules of both styles: clean-ups, joining, names, and the way to a location and back.
//
// The first line of an input is a path; what is behind it is joined to it.
#include <vector>

#include "fuzz/support/fuzz_input.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"

namespace korvex::fuzz {

namespace paths = korvex::runtime::paths;
using paths::PathStyle;

namespace {

struct CleanUp {
    std::string_view name;
    void (*apply)(std::u16string& path, PathStyle style);
    /// Only with back slashes `\\?\` is the prefix of the long form.
    bool mayChangeRoot = false;
};

constexpr CleanUp cleanUps[] = {
    {"removeSingleDots", paths::removeSingleDots},
    {"resolveDoubleDots", paths::resolveDoubleDots},
    {"foldDoubledSeparators", paths::foldDoubledSeparators},
    {"dropTrailingSeparators", paths::dropTrailingSeparators},
    {"replaceSlashes", paths::replaceSlashes, true},
    {"dropTrailingDotsAndSpaces", paths::dropTrailingDotsAndSpaces},
};

std::vector<std::u16string_view> componentsOf(std::u16string_view text, PathStyle style) {
    std::vector<std::u16string_view> components;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && !paths::isSeparator(text[i], style)) continue;
        components.push_back(text.substr(begin, i - begin));
        begin = i + 1;
    }
    return components;
}

std::u16string_view behindRoot(std::u16string_view path, PathStyle style) {
    return path.substr(paths::rootLength(path, style));
}

void examineCleanUps(const std::u16string& path, PathStyle style) {
    for (const CleanUp& cleanUp : cleanUps) {
        const std::string rule(cleanUp.name);
        std::u16string once = path;
        cleanUp.apply(once, style);
        std::u16string twice = once;
        cleanUp.apply(twice, style);
        require(twice == once, rule + " changes nothing the second time", path);
        require(once.size() <= path.size() || once == u".", rule + " makes no path longer", path);
        require(paths::isAbsolute(once, style) == paths::isAbsolute(path, style),
                rule + " leaves a path as absolute, or relative, as it was", path);
        const bool hasSameRoot = paths::rootLength(once, style) == paths::rootLength(path, style);
        require(cleanUp.mayChangeRoot || hasSameRoot, rule + " leaves the root alone", path);
    }
}

/// What a local path goes through before it becomes a location.
std::u16string prepared(std::u16string_view path, PathStyle style) {
    std::u16string result = paths::nativeForm(path, true, style);
    paths::removeSingleDots(result, style);
    paths::resolveDoubleDots(result, style);
    paths::foldDoubledSeparators(result, style);
    paths::dropTrailingSeparators(result, style);
    return result;
}

void examinePreparation(const std::u16string& path, PathStyle style) {
    const std::u16string ready = prepared(path, style);
    require(prepared(ready, style) == ready, "a prepared path is prepared to itself", path);
    if (!paths::isAbsolute(path, style)) return;
    require(paths::isAbsolute(ready, style), "an absolute path stays absolute", path);
    // Without a separator of its own a root ("C:" is none of these) ends where the path does.
    for (const std::u16string_view component : componentsOf(behindRoot(ready, style), style)) {
        require(component != u"." && component != u"..", "no dots are left behind the root", path);
        require(!component.empty() || behindRoot(ready, style).empty(), "no separator is doubled", path);
    }
}

void examineNames(const std::u16string& path, PathStyle style) {
    const std::u16string_view name = paths::fileNameOf(path, style);
    const std::u16string_view extension = paths::extensionOf(path, style);
    const std::u16string_view stem = paths::stemOf(path, style);
    require(path.ends_with(name), "a path ends with its file name", path);
    require(componentsOf(name, style).size() == 1, "no separator is in a file name", path);
    const bool isWholeName = stem == name && extension.empty();
    const bool isCutAtDot = stem.size() + 1 + extension.size() == name.size() && name.starts_with(stem) &&
                            name[stem.size()] == u'.' && name.ends_with(extension);
    require(isWholeName || isCutAtDot, "stem, dot and extension are the file name", path);
}

void examineLocationPath(const std::u16string& path, PathStyle style) {
    if (!paths::isAbsolute(path, style)) return;
    const paths::LocationPath location = paths::toLocationPath(path, style);
    require(location.path.starts_with(u'/'), "the path of a location begins with a separator", path);
    require(paths::foldSeparators(location.path) == location.path, "its separators are folded", path);
    // "\\?\" and "\\.\" lead into the system and not to a host.
    if (location.host == u"?" || location.host == u".") return;
    const std::u16string native = paths::toNativePath(location.host, location.path, style);
    // A volume by its number has no short form that is absolute.
    if (!paths::isAbsolute(native, style)) return;
    const paths::LocationPath again = paths::toLocationPath(native, style);
    require(again.host == location.host && again.path == location.path,
            "the native path of a location gives that location", path);
}

void examineJoining(const std::u16string& base, const std::u16string& path, PathStyle style) {
    const std::u16string result = paths::joined(base, path, style);
    require(path.empty() ? result == base : true, "nothing joined to a base gives the base", base);
    require(paths::isAbsolute(path, style) ? result == path : true, "an absolute path stays as it is", path);
    require(!paths::isAbsolute(base, style) || paths::isAbsolute(result, style),
            "what is joined to an absolute base is absolute", result);
    require(result.ends_with(behindRoot(path, style)), "the joined path ends with the path", path);
}

}  // namespace

void examine(std::string_view input) {
    const std::u16string text = textOf(input);
    std::u16string_view rest = text;
    const std::u16string path(takeLine(rest));
    for (const PathStyle style : {PathStyle::posix, PathStyle::windows}) {
        examineCleanUps(path, style);
        examinePreparation(path, style);
        examineNames(path, style);
        examineLocationPath(path, style);
        examineJoining(path, std::u16string(rest), style);
    }
}

}  // namespace korvex::fuzz
