// Names of folders as `what` takes them: which policy lets a name pass, and how it is spelled on disk.
#pragma once

#include <optional>
#include <string>

#include "platform/path_management.h"

namespace korvex::filemanip {

/// The name under which a folder is to be looked for. `MatchCase`: the name as it was given, or none when its
/// case is not that of the true spelling. The other policies: its true spelling where `mayCanonicalize`,
/// otherwise as it was given; whether there is such a folder, and by which case, the storage decides later.
/// Takes the name: it is empty afterwards.
std::optional<std::u16string> resolveFolderName(Velquist::PathManagement::FilenameMatchingPolicy policy,
                                                std::u16string& name, bool mayCanonicalize);

/// Whether letters and digits of a name agree in case with those at the end of its true spelling. What is
/// neither, as separators and dots, does not count, and where there is no true spelling the name is its own.
bool matchesCaseExactly(std::u16string name);

/// Spells a name as it stands on disk, in its canonical form; a name of a link, or of nothing, stays.
void canonicalizeName(std::u16string& name);

/// None for a link, and for what cannot be found. Raises what making a location raises.
std::optional<foundation::storage::vfs::CanonicalAbsoluteIRI> canonicalLocationOf(const std::u16string& path);

}  // namespace korvex::filemanip
