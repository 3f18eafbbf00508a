// From the text that a user typed to a location, and from a location back to a text for the user.
#pragma once

#include <string>

#include "platform/filesystem_core.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

/// Any scheme but "file".
bool isRemoteLocation(const foundation::storage::vfs::AbsoluteIRI& location);

/// The text of a location in every message: decoded when remote, otherwise the native path.
std::u16string locationText(const foundation::storage::vfs::AbsoluteIRI& location, bool isRemote);

/// Stores "KORVEX:virtualfilesystem:invalidIRI" with the decoded text, code 2.
void reportInvalidIRI(const std::u16string& text, io::filesystem::core::Status& status);

/// Stores "KORVEX:virtualfilesystem:invalidLocation" with the location's text, code 2.
void reportInvalidLocation(const foundation::storage::vfs::AbsoluteIRI& location,
                           io::filesystem::core::Status& status);

/// What became of a text that was taken in.
enum class TakenPath {
    refused,    ///< a bad location; the failure is stored and the command stops
    location,   ///< a text with a scheme, ready to become a location
    localPath,  ///< a local path, ready to become a location; empty when it cannot be used
};

/// The intake of a source or a destination of `copyfile` and `movefile`, in place. Sets `isIRI` for a text
/// with a scheme, and never clears it. Touches nothing. Raises `InvalidIRIException` for a text with a scheme
/// that does not parse in spite of good slashes.
TakenPath takeInPath(std::u16string& text, io::filesystem::core::ResolveSymbolicLinks mode, bool& isIRI,
                     io::filesystem::core::Status& status);

}  // namespace korvex::filemanip
