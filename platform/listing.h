// The listers: what is in a folder, what a pattern matches in a whole tree. And the window that shows it.
#pragma once

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/storage_vfs.h"

/// One listed entry.
struct FileNameWithStatLight {
    std::u16string name;
    /// The text of the folder that holds it: the native path of a local one, the decoded location of any
    /// other. Entries of one folder share one text.
    std::shared_ptr<const std::u16string> folder;
    /// A folder, or a link to one.
    bool isDirectory = false;
    /// In bytes; 0 for a folder. Of a link, that of what it leads to.
    std::variant<std::uint64_t, double> size;
    /// Time of last change in UTC, to the microsecond; of a link, that of what it leads to. Not-a-date-time
    /// when it is unknown, infinity when its year is outside of 1400 to 9999.
    boost::posix_time::ptime modified;
    /// False when nobody can tell the size, as of a link without a target.
    bool sizeKnown = false;
};

/// Receives the entries of one folder, sorted by name in 16-bit units. It may change the vector. `isEmpty`
/// tells that the folder holds nothing at all, and `text` is that folder's own text then.
using ListingDisplay = void (*)(std::vector<FileNameWithStatLight>& entries, const std::u16string& text,
                                bool isEmpty);

/// Lists what `pattern` matches in and below `folder`; true when there was anything.
///
/// The parts of a pattern stand between separators ("/" alone when `isIri`, the platform's otherwise). In a
/// part `*` matches any run of 16-bit units and `?` one unit; names compare as the platform's names do. The
/// part `**` matches any number of folders, none included; as the last one it matches all entries below, too.
/// An entry matched by a last part without wildcards is opened when it is a folder: its contents are listed
/// in its stead; so is a folder whose path is the whole pattern, with every `?` in it and no `*`. An empty
/// pattern is `folder` itself. `.` and `..` are never listed, all other entries are. Links to folders are
/// listed as folders, and walked into only where the pattern names them without wildcards.
///
/// Folders are visited depth first, each before what is in it, in the order of their names. Without a display
/// the entries are added to `entries` in that order. With one, `entries` serves as a buffer: for each folder
/// in which the pattern's end was looked for, the display is called once on the caller's thread, with its
/// matching entries and `prefix`; or, for a folder that holds nothing and of which everything was asked, with
/// no entries, the folder's text and `isEmpty`. Such a folder counts as found. Of entries for a display only
/// the name, the folder and `isDirectory` are filled in, and links are told as no folders.
///
/// A folder below `folder` that has gone meanwhile or may not be read is passed over. Nothing is found where
/// `folder` does not exist; only if it is `currentFolder`, which is the text of the current folder, that
/// raises `Exception<KORVEX::services::cwdIsInvalid>`. Raises `Exception<KORVEX::dir::SuccessiveGlobs>` for
/// two parts `**` in a row, `UnsupportedIRISchemeException`, what the display raises, and `vfs::Exception`
/// when `folder` may not be read or the storage fails, with what was collected so far lost. Of a local
/// folder a pending interrupt is not looked at; it ends the wait for a web location, of which nothing is
/// found then.
bool ioGetDirListRecursive(const foundation::storage::vfs::AbsoluteIRI& folder, std::u16string_view pattern,
                           std::vector<FileNameWithStatLight>& entries, const std::u16string& prefix,
                           bool isIri, ListingDisplay display, const std::u16string& currentFolder);

/// Adds the entries of one folder whose names match the pattern (`*` and `?`; without wildcards that name) to
/// `entries`, sorted by name in 16-bit units, folders not opened. `folder` is a path or a text with a scheme.
/// Only the name, the folder and `isDirectory` are filled in. No entry is looked at but links, which may lead
/// to a folder, and any on file systems that tell names without their kinds. Raises `vfs::Exception`,
/// `resourceNotFound` when the folder is not there, and what `GetIRIFromString` raises.
void ioGetDirListVFS(const std::u16string& folder, std::u16string_view pattern,
                     std::vector<FileNameWithStatLight>& entries);

/// Width of the command window in characters.
std::uint64_t ioGetNumWindowColumns();
