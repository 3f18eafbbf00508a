// Copies and moves between two providers: file by file, each through a buffer of bounded size.
//
// Folders are walked without recursion, whatever their depth, parents before what is in them. Content, write
// protection and, where both providers keep it, the time of last change go along; a folder that the process
// may not write arrives as a protected one. Links and devices mean something only to the provider that has
// them: one inside of a folder, or one that is to be moved, raises `unsupportedOperation` where it stands.
// Nothing is begun when one of the two providers only reads and the operation would have to write to it
// (`readOnlyProvider`).
//
// Between files and between buffers a pending interrupt ends the operation (transfer_progress.h).
#pragma once

#include "runtime/storage/provider.h"

namespace korvex::runtime::storage {

/// A location and the provider that serves it.
struct ServedLocation {
    Provider& provider;
    AbsoluteIRI location;
};

/// As `File::copyFile`. A link that is named as the source is followed.
void copyFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy);
/// The same, then removes the source. When that fails both files are there, and whole.
void moveFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy);

/// As `Folder::copyFolder`. When both locations are of one provider, its own `copyFile` copies each file.
void copyFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy);
/// The same, then removes the source with all it holds.
void moveFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy);

}  // namespace korvex::runtime::storage
