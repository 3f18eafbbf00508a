// How `dir` prepares a text with wildcards for the lister: which forms are legal, how the text becomes
// absolute, where it is cut into a folder to open and a pattern to match.
//
// Only `*` counts here. `?` is an ordinary unit on its way to the lister. Where a text has a scheme, "/"
// alone separates; otherwise the platform's separators do.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::filemanip {

/// Raises "KORVEX:dir:invalidGlob" for a `**` that is not a whole path part.
void validateRecursiveGlobs(std::u16string_view text);

/// A text whose last part is `**` gets "/*" at its end: all entries at any depth.
void expandRecursiveTail(std::u16string& text);

/// The folder in front of the first wildcard as the user typed it; nothing for a text that begins at `.`,
/// `..` or `~`, or goes through one.
std::u16string displayFolderPrefix(const std::u16string& text);

/// The text as an absolute one; nothing behind the part with the first wildcard is touched. Raises
/// `fl::filesystem::PathNotFound`.
std::u16string makeAbsoluteAroundWildcard(const std::u16string& text, const std::u16string& currentText);

/// Both with one separator between them, if neither brings one along.
std::u16string joinPathParts(const std::u16string& head, const std::u16string& tail);

/// Whether the pattern matches in several folders, so that each needs a header.
bool hasWildcardInFolderPart(std::u16string_view text, bool isIri);

/// A text, cut into a folder to open and a pattern over what is in and below it.
struct PatternCut {
    static constexpr std::size_t none = std::u16string::npos;

    /// Index of the first `*` at or behind the place where the search begins.
    std::size_t firstStar = none;
    std::u16string folderPart;
    /// Decoded where the text has a scheme. Empty for a web location, which is a folder part as a whole.
    std::u16string patternPart;
};

/// `searchStart` may lie behind the end, or be `PatternCut::none`: then no wildcard is seen.
PatternCut cutPattern(const std::u16string& text, std::size_t searchStart, bool isIri, bool isHttp,
                      const std::u16string& currentText);

}  // namespace korvex::filemanip
