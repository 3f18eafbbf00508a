// One question to the search path: which folders, of those that it is shown, a text names.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "platform/path_management.h"
#include "runtime/dispatcher/search_path_tail.h"

namespace korvex::runtime::dispatcher {

/// Belongs to the interpreter's thread. Folders that cannot be read are passed over; raises nothing.
class SearchPathQuery {
public:
    using Location = foundation::storage::vfs::CanonicalAbsoluteIRI;
    using Filter = std::vector<Velquist::PathManagement::PathEntryType>;
    using Policy = Velquist::PathManagement::FilenameMatchingPolicy;

    /// `filter` must live as long.
    SearchPathQuery(const Filter& filter, const std::u16string& text, Policy policy);

    /// A folder, and behind it the class, namespace and private folders in it, at any depth.
    void askPathFolder(const Location& folder);
    /// A folder and all below it, each before those in it, in the order of their names; links are not
    /// followed, and "resources" folders are left out with all they hold.
    void askTree(const Location& root);

    /// What was found since the last time. A folder that was found once is not found again.
    Velquist::PathManagement::PathItems takeItems();

private:
    void ask(const Location& folder);
    /// Whether the text could name anything but an ordinary folder: only then are folders read for such.
    bool mayNameSpecialFolder() const;

    const Filter& filter_;
    const PathTail tail_;
    const Policy policy_;
    std::unordered_set<std::u16string> found_;
    Velquist::PathManagement::PathItems items_;
};

}  // namespace korvex::runtime::dispatcher
