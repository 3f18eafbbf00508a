// Entries by name in an open folder: their neighbours, what they are, where they lead, and their renaming.
#pragma once

#include <sys/stat.h>

#include <string>

#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

/// An entry, named relative to an open folder (or AT_FDCWD).
struct EntryAt {
    int folder;
    const char* name;
};

/// Whether both are of one file.
bool isSameFile(const struct ::stat& a, const struct ::stat& b) noexcept;

/// The same file, and neither it nor its attributes have changed in between.
bool isUnchanged(const struct ::stat& before, const struct ::stat& after) noexcept;

/// A name for a temporary file that, in all likelihood, nobody else has.
std::string temporaryName();

/// A name in the folder that holds `entry`, whose own name may have a path in front.
std::string beside(EntryAt entry, const std::string& name);

/// What a link says; an empty text and the errno when it cannot be read.
std::string linkTargetOf(EntryAt link);

/// Renames, for a folder only onto nothing: EEXIST when anything stands there. 0 or the errno.
int renameOntoNothing(EntryAt source, EntryAt destination) noexcept;

/// Whether two names that lead to the same file are one and the same entry, by whatever spelling and over
/// whatever links. 0 or the errno.
int isOneEntry(EntryAt a, EntryAt b, bool& isOne);

/// Whether an entry, or the folder that holds it, is the folder `outer` or lies anywhere below it, whatever
/// paths lead there. False, too, for what cannot be looked at.
bool isAtOrBelow(EntryAt inner, EntryAt outer);

/// Where a link leads in the end: an entry that is no link, and need not exist.
class EndOfLink {
public:
    /// The name in `link` must live as long. `watched`: an entry that the way may meet.
    explicit EndOfLink(EntryAt link, const struct ::stat* watched = nullptr);
    /// 0 or the errno.
    int systemError() const noexcept { return systemError_; }
    EntryAt entry() const noexcept { return {folder_, name_.c_str()}; }
    /// Whether the watched entry is the end, or a link on the way there, be it in front of a name.
    bool meetsWatched() const noexcept { return meetsWatched_; }

private:
    EndOfLink(EntryAt link, const struct ::stat* watched, int& linksLeft);
    int follow(int& linksLeft);
    bool leadsThroughWatched(const std::string& path, int& linksLeft) const;

    FileDescriptor opened_;
    int folder_;
    std::string name_;
    const struct ::stat* watched_;
    bool meetsWatched_ = false;
    int systemError_ = 0;
};

}  // namespace korvex::runtime::storage::posix
