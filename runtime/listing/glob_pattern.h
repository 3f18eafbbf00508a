// Patterns over several path parts, as a walk uses them: at each folder it knows which parts are still to be
// matched by what is below.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/paths/path_style.h"
#include "runtime/storage/name_pattern.h"

namespace korvex::runtime::listing {

/// What an entry is to a pattern. A link to a folder is walked into only where a part without wildcards names
/// it.
enum class EntryShape { file, folder, linkToFolder };

class GlobPattern {
public:
    /// Numbers of the parts that may match the entries of a folder, in rising order. The number behind the
    /// last part stands for a folder that is opened: everything in it is listed.
    using Positions = std::vector<std::size_t>;

    struct Match {
        bool isListed = false;
        /// Of a folder: the positions in it. Empty when it need not be walked into.
        Positions next;
    };

    /// Parts stand between `separators`; empty ones do not count. A last part `**` has a `*` behind it.
    /// Raises `Exception<KORVEX::dir::SuccessiveGlobs>`.
    GlobPattern(std::u16string_view pattern, std::u16string_view separators, paths::PathStyle style);
    /// A path, in which no unit is a wildcard.
    static GlobPattern ofPath(std::u16string_view path, std::u16string_view separators);
    /// One part that is a pattern over names; a folder of that name is not opened. Empty matches everything.
    static GlobPattern overNames(std::u16string_view pattern, paths::PathStyle style);

    /// The parts in front of the first one with a wildcard, as they were given.
    const std::vector<std::u16string>& leadingNames() const noexcept { return leadingNames_; }
    /// Whether there is no part behind the leading ones.
    bool isPath() const noexcept { return parts_.empty(); }
    /// The positions in the folder that the leading names lead to.
    Positions start() const;

    /// Whether the pattern may end with an entry of this folder.
    bool endsIn(const Positions& positions) const noexcept;
    /// Whether every entry of the folder is listed.
    bool listsEverything(const Positions& positions) const noexcept;
    /// Whether an entry that is no folder is listed.
    bool listsFile(const Positions& positions, std::u16string_view name) const;
    Match match(const Positions& positions, std::u16string_view name, EntryShape shape) const;

private:
    enum class PartKind { name, wildcard, anyFolders };
    struct Part {
        Part(PartKind partKind, storage::NamePattern names)
            : kind(partKind), pattern(std::move(names)), matchesEverything(pattern.matchesEverything()) {}
        bool matches(std::u16string_view name) const noexcept {
            return matchesEverything || pattern.matches(name);
        }

        PartKind kind;
        storage::NamePattern pattern;
        bool matchesEverything;
    };

    GlobPattern() = default;

    bool isLast(std::size_t position) const noexcept { return position + 1 == parts_.size(); }
    bool isOpened(std::size_t position) const noexcept { return position == parts_.size(); }
    void addPosition(Positions& positions, std::size_t position) const;

    std::vector<std::u16string> leadingNames_;
    std::vector<Part> parts_;
};

}  // namespace korvex::runtime::listing
