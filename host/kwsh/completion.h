// What Tab makes of a line: names, option words, files, with their quotes put right.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::host {

struct FolderEntry {
    std::u16string name;
    /// Links to folders count as such.
    bool isFolder = false;
};

/// What there is at the moment to choose from.
class CompletionNames {
public:
    virtual ~CompletionNames() = default;
    virtual std::vector<std::u16string> variables() const = 0;
    virtual std::vector<std::u16string> packages() const = 0;
    /// What a folder holds, in the order of names; a path taken against the current folder, a location, or
    /// empty for the current folder. Empty when it cannot be listed. Never raises.
    virtual std::vector<FolderEntry> entries(const std::u16string& folder) const = 0;
};

struct Completion {
    /// The units of the line that `text` replaces.
    std::size_t begin = 0;
    std::size_t end = 0;
    /// What all candidates have in common; with one candidate, all of it. May be what stands there already.
    std::u16string text;
    /// The candidates as they are shown, without the folder that they share.
    std::vector<std::u16string> candidates;

    bool isEmpty() const noexcept { return candidates.empty(); }
};

using CompleteLine = std::function<Completion(std::u16string_view line, std::size_t cursor)>;

/// `before` are the earlier lines of the statement, each with its line end; `cursor` is an offset in `line`.
Completion complete(std::u16string_view before, std::u16string_view line, std::size_t cursor,
                    const CompletionNames& names);

/// The candidates in columns, each line with its end. Of very many the first ones, and how many more there
/// are.
std::u16string candidateList(const std::vector<std::u16string>& candidates, std::size_t columns);

}  // namespace korvex::host
