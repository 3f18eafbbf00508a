// Small steps that the file and the folder side of a transfer share.
#pragma once

#include <string>

#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

inline foundation::storage::vfs::StorageSystemReference storageSystem() {
    return Velquist::KorvexStorageSystem::GetStorageSystemReference();
}

/// The text of a location in messages, by its own scheme.
inline std::u16string displayText(const foundation::storage::vfs::AbsoluteIRI& location) {
    return locationText(location, isRemoteLocation(location));
}

/// Whether the item is a link; false, too, where it cannot be told.
bool isLink(const foundation::storage::vfs::Item& item);

/// Whether the location has a parent and something stands there. Raises what `exists` raises.
bool doesParentExist(const foundation::storage::vfs::AbsoluteIRI& location);

/// Makes a moved item read-only again. A failure is traced and dropped: the move has happened.
template <class Handle>
void protectAgain(const Handle& moved) {
    try {
        moved.setWritable(false);
    } catch (const foundation::storage::vfs::Exception&) {
        traceCurrentException();
    }
}

}  // namespace korvex::filemanip
