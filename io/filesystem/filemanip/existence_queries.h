// `isfile` and `isfolder`: does a file, or a folder, stand at this place.
//
// One template serves both commands; `T` is `File` or `Folder`, and only the handle that is asked differs.
#pragma once

#include <string_view>

#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// One text: empty is never there, a text with a scheme is a location, any other a path against
/// `currentFolder`. A location that the storage cannot reach is not there. Raises what making the location
/// raises.
template <class T>
bool locationExists(std::u16string_view text, const foundation::storage::vfs::StorageSystemReference& storage,
                    const foundation::storage::vfs::Folder& currentFolder);

extern template bool locationExists<foundation::storage::vfs::File>(
    std::u16string_view, const foundation::storage::vfs::StorageSystemReference&,
    const foundation::storage::vfs::Folder&);
extern template bool locationExists<foundation::storage::vfs::Folder>(
    std::u16string_view, const foundation::storage::vfs::StorageSystemReference&,
    const foundation::storage::vfs::Folder&);

}  // namespace korvex::filemanip
