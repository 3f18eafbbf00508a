// From a path as it was typed to one that can become a location.
#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"

namespace korvex::io::filesystem::core {

namespace paths = korvex::runtime::paths;
namespace vfs = foundation::storage::vfs;

namespace {

void resolveDots(std::u16string& path) {
    paths::removeSingleDots(path, paths::nativeStyle);
    paths::resolveDoubleDots(path, paths::nativeStyle);
}

/// The path with the links resolved in as much of it as exists. What cannot be looked at counts as not there.
std::u16string withLinksFollowed(const std::u16string& absolutePath) {
    const auto storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    vfs::AbsoluteIRI existing = Velquist::PathManagement::GetIRIFromString(absolutePath);
    std::u16string missing;
    while (true) {
        try {
            const vfs::AbsoluteIRI canonical = vfs::Folder(existing, storage).getCanonicalLocation();
            return vfs::fromAbsoluteIRI(missing.empty() ? canonical : vfs::AbsoluteIRI(canonical, missing));
        } catch (const vfs::Exception&) {
            if (!existing.hasParent()) return absolutePath;
        }
        if (!missing.empty()) missing.insert(0, 1, u'/');
        missing.insert(0, existing.getName());
        existing = existing.getParent();
    }
}

}  // namespace

void relativeToAbsolute(std::u16string& path, ResolveSymbolicLinks mode) {
    path = fl::filesystem::absolute(path, u"");
    if (mode != KeepLinksAndDots) resolveDots(path);
    if (mode == FollowLinks) path = withLinksFollowed(path);
}

bool setupPathForURLConstruction(std::u16string& path, ResolveSymbolicLinks mode) {
    try {
        path = fl::filesystem::absolute(path, u"");
    } catch (const fl::filesystem::PathNotFound&) {
        path.clear();
        return false;
    }
    path = paths::nativeForm(path, true, paths::nativeStyle);
    if (mode != KeepLinksAndDots) resolveDots(path);
    paths::foldDoubledSeparators(path, paths::nativeStyle);
    paths::dropTrailingSeparators(path, paths::nativeStyle);
    if (mode == FollowLinks) path = withLinksFollowed(path);
    return true;
}

}  // namespace korvex::io::filesystem::core
