// How the lister reads a storage: folders of this machine by open handles and with several threads, those of
// any other storage through its provider.
#pragma once

#include <memory>

#include "runtime/listing/glob_pattern.h"
#include "runtime/listing/listed_folder.h"
#include "runtime/storage/provider.h"

namespace korvex::runtime::listing {

/// What is to be known of an entry beside its name and whether it is a folder itself.
enum class Detail {
    none,
    linkedFolders,  ///< whether a link leads to a folder; nothing but links is looked at
    sizeAndTime,    ///< and that as well
};

class ListingStorage {
public:
    using AbsoluteIRI = foundation::storage::vfs::AbsoluteIRI;

    virtual ~ListingStorage() = default;

    /// The entry at a location where something stands that is no folder, without its folder.
    virtual FileNameWithStatLight describe(const AbsoluteIRI& location, Detail detail) = 0;

    /// Fills `top`, whose positions are set, with what the pattern matches in and below a folder, in the
    /// order of names. False when the folder is not there. A folder below that cannot be read is passed over.
    /// Raises `vfs::Exception` when `folder` cannot be read.
    virtual bool walk(const AbsoluteIRI& folder, const GlobPattern& pattern, Detail detail,
                      ListedFolder& top) = 0;
};

/// `provider` must live as long.
std::unique_ptr<ListingStorage> listingStorageOf(storage::Provider& provider);

}  // namespace korvex::runtime::listing
