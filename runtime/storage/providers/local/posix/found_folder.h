// A folder that was listed, held for the sake of the entries that the listing gave.
//
// What is done to such an entry goes by the open folder and the entry's name, not by its path: a link that
// somebody puts in the place of the folder, or of one above it, leads nowhere. Of the folders of one listing
// and of those below it only so many stay open; the others are opened again from above when they are needed,
// and must be the same ones then.
#pragma once

#include <memory>

#include "runtime/storage/location.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

class FoundFolder : public FoundPlace {
    struct KeptTree;

public:
    /// Keeps a folder that is open for listing; `location` is its own. Null when so many listings are kept
    /// that handles would run short: their entries go by path.
    static std::shared_ptr<const FoundFolder> keep(FileDescriptor folder, const AbsoluteIRI& location);
    /// The folder in which a location was found; null for one that no listing gave.
    static std::shared_ptr<const FoundFolder> of(const AbsoluteIRI& location) noexcept;

    /// The descriptor to look names up in. Null and the errno when the folder is not to be found any more.
    FolderTree::Handle handle(int& systemError) const;
    /// Whether something is mounted here, or between here and the folder that was listed first: what stands
    /// here is no part of the tree that a removal works on.
    bool isMountedInTree() const noexcept { return isMountedInTree_; }

private:
    static bool isBelow(const FoundFolder& above, int folder, const AbsoluteIRI& location);
    FoundFolder(std::shared_ptr<KeptTree> tree, std::shared_ptr<TreeFolder> folder, bool isMountedInTree)
        : tree_(std::move(tree)), folder_(std::move(folder)), isMountedInTree_(isMountedInTree) {}

    std::shared_ptr<KeptTree> tree_;
    std::shared_ptr<TreeFolder> folder_;
    const bool isMountedInTree_;
};

}  // namespace korvex::runtime::storage::posix
