// Patterns of `dir`: their preparation, and what they match, against a plain recursive definition of the
// same.
//
// The first line of an input is a pattern, the second one a path below the folder that the pattern starts in.
#include <optional>
#include <vector>

#include "fuzz/support/fuzz_input.h"
#include "io/filesystem/filemanip/dir_listing_patterns.h"
#include "platform/foundation_filesystem.h"
#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"
#include "runtime/listing/glob_pattern.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/name_pattern.h"

namespace korvex::fuzz {

namespace filemanip = korvex::filemanip;
namespace listing = korvex::runtime::listing;
namespace paths = korvex::runtime::paths;
using foundation::core::except::Exception;
using korvex::runtime::storage::NamePattern;
using listing::EntryShape;
using listing::GlobPattern;
using paths::PathStyle;

using Parts = std::vector<std::u16string>;

namespace {

constexpr std::u16string_view anyFolders = u"**";

std::u16string_view separatorsOf(PathStyle style) { return style == PathStyle::windows ? u"\\/" : u"/"; }

bool hasWildcard(std::u16string_view part) { return part.find_first_of(u"*?") != part.npos; }

/// What stands between separators; empty parts do not count.
Parts partsOf(std::u16string_view text, PathStyle style) {
    Parts parts(1);
    for (const char16_t unit : text) {
        if (paths::isSeparator(unit, style)) {
            parts.emplace_back();
        } else {
            parts.back() += unit;
        }
    }
    std::erase(parts, u"");
    return parts;
}

// ------------------------------------------------------------------------------- names, by definition

/// The table of which beginnings of the pattern match which beginnings of the name.
bool matchesByDefinition(std::u16string_view pattern, std::u16string_view name, PathStyle style) {
    if (pattern.empty()) return true;
    std::vector<bool> row(name.size() + 1);
    row[0] = true;
    for (const char16_t wanted : pattern) {
        std::vector<bool> next(name.size() + 1);
        next[0] = wanted == u'*' && row[0];
        for (std::size_t i = 0; i < name.size(); ++i) {
            const bool isSame =
                wanted == u'?' || NamePattern(std::u16string(1, wanted), style).matches(name.substr(i, 1));
            next[i + 1] = wanted == u'*' ? next[i] || row[i + 1] : row[i] && isSame;
        }
        row = std::move(next);
    }
    return row[name.size()];
}

void examineNames(const std::u16string& pattern, const std::u16string& name, PathStyle style) {
    const NamePattern names(pattern, style);
    const bool matches = names.matches(name);
    require(matches == matchesByDefinition(pattern, name, style), "a name matches by definition", pattern);
    require(names.hasWildcard() == hasWildcard(pattern), "wildcards are seen", pattern);
    require(!names.matchesEverything() || matches, "what matches everything matches", pattern);
    const bool isPlain = style == PathStyle::posix && !pattern.empty() && !hasWildcard(pattern);
    require(!isPlain || matches == (pattern == name), "a plain pattern matches its own name only", pattern);
}

// ------------------------------------------------------------------------------- paths, by definition

/// A pattern over several parts, and a path of which all components but the last are folders.
class Definition {
public:
    Definition(Parts parts, PathStyle style) : parts_(std::move(parts)), style_(style) {
        if (!parts_.empty() && parts_.back() == anyFolders) parts_.emplace_back(u"*");
        while (!parts_.empty() && !hasWildcard(parts_.front()))
            parts_.erase(parts_.begin());
    }

    bool lists(const Parts& path, bool isFolder) const {
        const bool endsInName = parts_.empty() || !hasWildcard(parts_.back());
        const bool isInOpenedFolder = endsInName && matches(0, path, 0, path.size() - 1);
        // A folder that a plain part names is opened; it is not an entry itself.
        return isInOpenedFolder || (!(isFolder && endsInName) && matches(0, path, 0, path.size()));
    }

private:
    bool matches(std::size_t part, const Parts& path, std::size_t begin, std::size_t end) const {
        if (part == parts_.size()) return begin == end;
        if (parts_[part] == anyFolders) {
            for (; begin < end; ++begin)
                if (matches(part + 1, path, begin, end)) return true;
            return matches(part + 1, path, end, end);
        }
        return begin < end && matchesByDefinition(parts_[part], path[begin], style_) &&
               matches(part + 1, path, begin + 1, end);
    }

    Parts parts_;
    PathStyle style_;
};

/// The same by a walk, folder by folder.
bool isListedByWalk(const GlobPattern& glob, const Parts& path, bool isFolder) {
    GlobPattern::Positions positions = glob.start();
    for (std::size_t i = 0; i + 1 < path.size(); ++i)
        positions = glob.match(positions, path[i], EntryShape::folder).next;
    const EntryShape shape = isFolder ? EntryShape::folder : EntryShape::file;
    const bool isListed = glob.match(positions, path.back(), shape).isListed;
    const std::u16string text = path.back();
    if (!isFolder) require(glob.listsFile(positions, text) == isListed, "both questions agree", text);
    if (glob.listsEverything(positions)) require(isListed, "everything is listed where it says so", text);
    if (!glob.endsIn(positions)) require(!isListed, "nothing is listed where no pattern ends", text);
    return isListed;
}

bool hasTwoInARow(const Parts& parts) {
    for (std::size_t i = 1; i < parts.size(); ++i)
        if (parts[i] == anyFolders && parts[i - 1] == anyFolders) return true;
    return false;
}

std::optional<GlobPattern> globOf(const std::u16string& pattern, PathStyle style) {
    const bool isRefused = hasTwoInARow(partsOf(pattern, style));
    try {
        GlobPattern glob(pattern, separatorsOf(style), style);
        require(!isRefused, "two parts in a row for any folders are refused", pattern);
        return glob;
    } catch (const Exception<KORVEX::dir::SuccessiveGlobs>&) {
        require(isRefused, "only two parts in a row for any folders are refused", pattern);
        return std::nullopt;
    }
}

void examinePaths(const std::u16string& pattern, const Parts& path, PathStyle style) {
    const std::optional<GlobPattern> glob = globOf(pattern, style);
    if (!glob || path.empty()) return;
    const Definition definition(partsOf(pattern, style), style);
    for (const bool isFolder : {false, true}) {
        require(isListedByWalk(*glob, path, isFolder) == definition.lists(path, isFolder),
                "a walk lists what the pattern defines", pattern);
    }
}

// -------------------------------------------------------------------------------------- preparation

void examinePreparation(const std::u16string& typed) {
    try {
        filemanip::validateRecursiveGlobs(typed);
    } catch (const Exception<KORVEX::dir::invalidGlob>&) {
        require(typed.find(anyFolders) != typed.npos, "only doubled stars are refused", typed);
        return;
    }
    const std::u16string here = u"/here";
    std::u16string text = filemanip::makeAbsoluteAroundWildcard(typed, here);
    const std::size_t star = std::min(typed.find(u'*'), typed.size());
    // A colon at this place makes a drive of what is in front of it, on purpose everywhere.
    const bool hasDrive = typed.find(u':') == 1;
    require(hasDrive || text.ends_with(typed.substr(star)), "nothing from the first wildcard on is touched",
            typed);

    filemanip::expandRecursiveTail(text);
    const std::u16string expanded = text;
    filemanip::expandRecursiveTail(text);
    require(text == expanded, "a pattern is expanded once", typed);

    const filemanip::PatternCut cut = filemanip::cutPattern(text, 0, false, false, here);
    const bool isWhole = cut.folderPart + cut.patternPart == text;
    require(isWhole || cut.folderPart.starts_with(here) || cut.folderPart.ends_with(u":/"),
            "folder and pattern are the text", typed);
    require((cut.firstStar == filemanip::PatternCut::none) == (text.find(u'*') == text.npos),
            "a wildcard is seen where one is", typed);
    (void)globOf(cut.patternPart, paths::nativeStyle);
}

}  // namespace

void examine(std::string_view input) {
    // The definition takes its time with many parts that may be any number of folders.
    constexpr std::size_t longest = 200;
    const std::u16string text = textOf(input.substr(0, longest));
    std::u16string_view rest = text;
    const std::u16string pattern(takeLine(rest));
    const std::u16string path(takeLine(rest));
    for (const PathStyle style : {PathStyle::posix, PathStyle::windows}) {
        examineNames(pattern, path, style);
        examinePaths(pattern, partsOf(path, style), style);
    }
    if (!pattern.empty()) examinePreparation(pattern);
}

}  // namespace korvex::fuzz
