// Patterns over several path parts.
#include "runtime/listing/glob_pattern.h"

#include <algorithm>

#include "platform/message_identifiers.h"
#include "platform/user_exceptions.h"

namespace korvex::runtime::listing {

namespace {

using SuccessiveGlobs = foundation::core::except::Exception<KORVEX::dir::SuccessiveGlobs>;
using storage::NamePattern;

constexpr std::u16string_view anyFoldersPart = u"**";
constexpr std::u16string_view anyName = u"*";

std::vector<std::u16string_view> partsOf(std::u16string_view pattern, std::u16string_view separators) {
    std::vector<std::u16string_view> parts;
    for (std::size_t begin = 0; begin < pattern.size();) {
        const std::size_t end = std::min(pattern.find_first_of(separators, begin), pattern.size());
        if (end > begin) parts.push_back(pattern.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

void requireNoSuccessiveGlobs(const std::vector<std::u16string_view>& parts) {
    const auto twice =
        std::adjacent_find(parts.begin(), parts.end(), [](std::u16string_view a, std::u16string_view b) {
            return a == anyFoldersPart && b == anyFoldersPart;
        });
    if (twice != parts.end()) throw SuccessiveGlobs(KORVEX::dir::SuccessiveGlobs());
}

}  // namespace

GlobPattern::GlobPattern(std::u16string_view pattern, std::u16string_view separators,
                         paths::PathStyle style) {
    std::vector<std::u16string_view> parts = partsOf(pattern, separators);
    requireNoSuccessiveGlobs(parts);
    if (!parts.empty() && parts.back() == anyFoldersPart) parts.push_back(anyName);

    for (const std::u16string_view part : parts) {
        NamePattern names(part, style);
        if (!names.hasWildcard() && parts_.empty()) {
            leadingNames_.emplace_back(part);
        } else if (part == anyFoldersPart) {
            parts_.emplace_back(PartKind::anyFolders, std::move(names));
        } else {
            const PartKind kind = names.hasWildcard() ? PartKind::wildcard : PartKind::name;
            parts_.emplace_back(kind, std::move(names));
        }
    }
}

GlobPattern GlobPattern::ofPath(std::u16string_view path, std::u16string_view separators) {
    GlobPattern glob;
    for (const std::u16string_view name : partsOf(path, separators))
        glob.leadingNames_.emplace_back(name);
    return glob;
}

GlobPattern GlobPattern::overNames(std::u16string_view pattern, paths::PathStyle style) {
    GlobPattern glob;
    glob.parts_.emplace_back(PartKind::wildcard, NamePattern(pattern, style));
    return glob;
}

GlobPattern::Positions GlobPattern::start() const {
    Positions positions;
    addPosition(positions, 0);
    return positions;
}

bool GlobPattern::endsIn(const Positions& positions) const noexcept {
    return !positions.empty() && positions.back() + 1 >= parts_.size();
}

bool GlobPattern::listsEverything(const Positions& positions) const noexcept {
    return std::ranges::any_of(positions, [this](std::size_t position) {
        return isOpened(position) || (isLast(position) && parts_[position].matchesEverything);
    });
}

bool GlobPattern::listsFile(const Positions& positions, std::u16string_view name) const {
    return std::ranges::any_of(positions, [&](std::size_t position) {
        return isOpened(position) || (isLast(position) && parts_[position].matches(name));
    });
}

GlobPattern::Match GlobPattern::match(const Positions& positions, std::u16string_view name,
                                      EntryShape shape) const {
    if (shape == EntryShape::file) return {listsFile(positions, name), {}};

    const bool mayUseWildcards = shape == EntryShape::folder;
    Match match;
    for (const std::size_t position : positions) {
        if (isOpened(position)) {
            match.isListed = true;
            continue;
        }
        const Part& part = parts_[position];
        if (part.kind == PartKind::anyFolders) {
            if (mayUseWildcards) addPosition(match.next, position);
        } else if (part.matches(name)) {
            const bool isWalkedInto = part.kind == PartKind::name || (mayUseWildcards && !isLast(position));
            if (isWalkedInto) addPosition(match.next, position + 1);
            if (isLast(position) && part.kind == PartKind::wildcard) match.isListed = true;
        }
    }
    return match;
}

/// Keeps the positions in order. Any number of folders may be none, so the part behind that may match, too.
void GlobPattern::addPosition(Positions& positions, std::size_t position) const {
    const auto place = std::ranges::lower_bound(positions, position);
    if (place == positions.end() || *place != position) positions.insert(place, position);
    if (!isOpened(position) && parts_[position].kind == PartKind::anyFolders) {
        addPosition(positions, position + 1);
    }
}

}  // namespace korvex::runtime::listing
