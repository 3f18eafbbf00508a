// Listing of a whole local tree, with size and time of every entry.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/storage_vfs.h"

namespace korvex::runtime::storage {

/// One entry of a listed tree.
struct ListedTreeEntry {
    std::u16string name;
    bool isFolder = false;  ///< a folder or a link to one
    bool isLink = false;
    /// In bytes; of a link, of what it leads to. Unknown for a link without a target and for what went
    /// meanwhile.
    std::optional<std::uint64_t> size;
    /// Time of last change in nanoseconds since 1970, UTC. One that does not fit, before 1678 or after 2261,
    /// is the first or last one that does.
    std::optional<std::int64_t> modified;
};

/// Receives the entries of one folder, in no particular order, with its path below the top folder, "/"
/// between names. Called by several threads, one call at a time, a folder after those below it.
using TreeListingReceiver =
    std::function<void(const std::u16string& folder, std::vector<ListedTreeEntry>&& entries)>;

/// Lists a folder and all below it; links to folders are not walked into. Raises `vfs::Exception` at the
/// folder that could not be read.
void listLocalTree(const foundation::storage::vfs::AbsoluteIRI& folder, const TreeListingReceiver& receive);

}  // namespace korvex::runtime::storage
