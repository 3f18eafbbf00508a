// Names of folders as `what` takes them: which policy lets a name pass, and how it is spelled on disk.
#include "io/filesystem/filemanip/what_folder_names.h"

#include <array>
#include <utility>

#include "platform/filesystem_shared.h"
#include "platform/regular_expressions.h"
#include "platform/short_path_names.h"
#include "platform/storage_vfs.h"

namespace korvex::filemanip {

namespace path_management = Velquist::PathManagement;
namespace vfs = foundation::storage::vfs;

namespace {

/// The way through the short form gives each component in its stored case, where there are short forms.
void spellThroughShortForm(std::u16string& name) {
    std::array<char16_t, 1025> buffer{};
    const auto fits = [&](unsigned long units) { return units > 0 && units <= buffer.size(); };
    if (!fits(GetShortPathNameW(name.c_str(), buffer.data(), buffer.size()))) return;
    if (!fits(GetLongPathNameW(buffer.data(), buffer.data(), buffer.size()))) return;
    name = buffer.data();
}

/// An expression that finds the name, whatever stands between its letters and digits, at the end of a text.
std::u16string expressionOf(const std::u16string& name) {
    using namespace RE_Builder_Space;
    const RE_Tree separators(kleene(set(nonWordCharacters, false), greedy));
    return RE_Replace(u"\\\\W*").replace(name, separators) + u'$';
}

}  // namespace

std::optional<std::u16string> resolveFolderName(path_management::FilenameMatchingPolicy policy,
                                                std::u16string& name, bool mayCanonicalize) {
    std::u16string resolved = std::exchange(name, {});
    if (policy == path_management::MatchCase) {
        if (!matchesCaseExactly(resolved)) return std::nullopt;
    } else if (mayCanonicalize) {
        canonicalizeName(resolved);
    }
    return resolved;
}

bool matchesCaseExactly(std::u16string name) {
    const std::u16string expression = expressionOf(name);
    canonicalizeName(name);
    return RE_Tree(expression, false).match(name, 0).has_value();
}

void canonicalizeName(std::u16string& name) {
    try {
        if (const auto location = canonicalLocationOf(name)) {
            name = path_management::GetStringFromIRI(*location);
        }
    } catch (...) {
        spellThroughShortForm(name);
    }
}

std::optional<vfs::CanonicalAbsoluteIRI> canonicalLocationOf(const std::u16string& path) {
    if (filesystemSharedFcns::isSymlink(path)) return std::nullopt;
    const vfs::AbsoluteIRI location = path_management::GetIRIFromString(path);
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    try {
        return vfs::Folder(location, storage).getCanonicalLocation();
    } catch (const vfs::Exception&) {
        // Perhaps it is no folder.
    }
    try {
        return vfs::File(location, storage).getCanonicalLocation();
    } catch (const vfs::Exception&) {
        return std::nullopt;
    }
}

}  // namespace korvex::filemanip
