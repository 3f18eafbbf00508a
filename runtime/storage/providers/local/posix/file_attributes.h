// What a copy keeps of a file or folder beside its content: extended attributes, access lists, owner,
// permission bits and times.
//
// The order is: content, owner, extended attributes, bits and times. For a change of the content or of the
// owner takes away what lends rights.
#pragma once

#include <sys/stat.h>

#include <vector>

#include "runtime/storage/providers/local/posix/copy_abilities.h"
#include "runtime/storage/providers/local/posix/file_content.h"

namespace korvex::runtime::storage::posix {

/// The names of a file's extended attributes, each with a NUL behind it.
Failure listExtendedAttributes(int source, CopyAbilities& abilities, std::vector<char>& names);

inline constexpr const char* accessListName = "system.posix_acl_access";

/// Gives `destination` the attributes of those names, as far as its file system takes them and has room for
/// them; on a full disk ENOSPC. `made` is the status of `destination`, and holds for it afterwards.
Failure copyExtendedAttributes(int source, int destination, const std::vector<char>& names,
                               struct ::stat& made);

/// The permission bits that a copy gets, of those of its source. Where the source has an access list that has
/// not arrived, its group's bits say what the list allows anybody at most: only those stay that everybody
/// has.
mode_t bitsWithoutLostList(mode_t source, int destination, const std::vector<char>& names) noexcept;

/// Whether new entries of the folder get access lists from it. True, too, where it cannot be told.
bool handsAccessListsOn(int folder) noexcept;

/// Takes the access lists away that a new file or folder has from the folder in which it was made, but for
/// those among `names`, which it has from its source. `mode` tells whether it is a folder. 0 or the errno.
int removeInheritedAccessLists(int made, mode_t mode, const std::vector<char>& names) noexcept;

/// Gives an open file or folder the owner and group of `wanted`, as far as the process may. `made` is its
/// status, and holds for it afterwards.
void giveOwner(int destination, const struct ::stat& wanted, struct ::stat& made) noexcept;

/// Gives an open file or folder, whose status is `made`, the permission bits and the time of last change, as
/// far as its file system keeps them. The bits that lend the owner's rights are left out where the owner is
/// another one. 0 or the errno.
int copyModeAndTimes(const struct ::stat& sourceStatus, int destination, const struct ::stat& made) noexcept;

/// Whether the errno says that a file system does not keep bits or times, or not for everybody: a copy is
/// none the worse for it.
bool meansNotKept(int systemError) noexcept;

}  // namespace korvex::runtime::storage::posix
