// Copies and moves between two providers: file by file, each through a buffer of bounded size.
//
// Folders are walked without recursion, whatever their depth, parents before what is in them. Content, write
// protection and, where both providers keep it, the time of last change go along; a folder that the process
// may not write arrives as a protected one. Links and devices mean something only to the provider that has
// them: one inside of a folder, or one that is to be moved, raises `unsupportedOperation` where it stands.
// Nothing is begun when one of the two providers only reads and the operation would have to write to it
// (`readOnlyProvider`), or when the folder that holds what is to be moved may not be written
// (`permissionDenied` at the source).
//
// No link is followed below the folders that were named, on neither side, also one that somebody puts in the
// place of a folder meanwhile. A folder that meets a link there raises `resourceAlreadyExists`; a file
// replaces the link itself. A folder that may not be listed is not copied into.
//
// A move has its copy outlive a loss of power before it begins to remove, and removes what it has copied and
// what is as it was then; anything else stays, and raises `resourceInUse` where it stands. For that it
// remembers name, size and time of every file it copies, some 100 bytes each, and waits where one more change
// to a file could leave its time the same: some milliseconds, up to two seconds where its storage keeps whole
// seconds. Of a file whose storage tells no time it sees no more than a change of the size.
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
/// The same, then removes the source. When that fails, or the source has changed since, both files are there,
/// and the copy is whole.
void moveFileBetween(const ServedLocation& source, const ServedLocation& destination,
                     ReplacementPolicy policy);

/// As `Folder::copyFolder`. When both locations are of one provider, its own `copyFile` copies each file.
void copyFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy);
/// The same, then removes what was copied, and the folders that are empty then. Raises `invalidLocation`
/// before anything is copied for a source whose last component is a dot or two, and as
/// `refuseMergeOntoItself`.
void moveFolderBetween(const ServedLocation& source, const ServedLocation& destination,
                       ReplacementPolicy policy);

/// Raises `invalidLocation` for a folder that is to be moved into one above it, and that holds a folder which
/// leads from there to itself: it would have to stay and go. The location is where the two would meet.
void refuseMergeOntoItself(Provider& provider, const AbsoluteIRI& source, const AbsoluteIRI& destination);

}  // namespace korvex::runtime::storage
