// Locations as the search path, the folder views and the function cache compare and show them.
#pragma once

#include <string>
#include <string_view>

#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"

namespace korvex::runtime::dispatcher {

/// Whether two names, or paths, name the same on a disk of the style: case is ignored by the Windows style.
bool areSameNames(std::u16string_view a, std::u16string_view b, paths::PathStyle style);

/// The same for locations; those that are not local compare unit by unit.
bool areSameLocations(const foundation::storage::vfs::AbsoluteIRI& a,
                      const foundation::storage::vfs::AbsoluteIRI& b);

/// The canonical form of a location whose end may be gone: the deepest folder above it that is still there in
/// its canonical form, and the rest behind it with its dots resolved as text. Raises nothing; where the
/// storage does not answer at all, the location is given back as it is.
foundation::storage::vfs::CanonicalAbsoluteIRI nearestCanonicalLocation(
    const foundation::storage::vfs::AbsoluteIRI& location);

/// The same for the folder above it only, so that a link keeps its own name.
foundation::storage::vfs::CanonicalAbsoluteIRI locationInCanonicalFolder(
    const foundation::storage::vfs::AbsoluteIRI& location);

/// As messages show it: the native path of a local location, the decoded text of any other.
std::u16string shownText(const foundation::storage::vfs::AbsoluteIRI& location);

}  // namespace korvex::runtime::dispatcher
