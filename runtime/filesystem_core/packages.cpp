// Which package a folder belongs to.
#include "platform/filesystem_core.h"
#include "runtime/packages/package_services.h"
#include "runtime/packages/registry_state.h"

namespace korvex::io::filesystem::core {

namespace packages = korvex::runtime::packages;
namespace vfs = foundation::storage::vfs;

using Velquist::KorvexComponents::ComponentIdentifier;

namespace {

/// The canonical location of what exists of a folder, and behind it the names of what does not: a folder that
/// is to come belongs where its parent belongs, also when that is reached through a link. A location that
/// cannot be looked at stays as it is.
vfs::AbsoluteIRI locationToClaim(const vfs::Folder& folder) {
    vfs::AbsoluteIRI existing = folder.getLocation();
    std::u16string missing;
    while (true) {
        try {
            const vfs::AbsoluteIRI canonical = vfs::Folder(existing, folder.storage()).getCanonicalLocation();
            return missing.empty() ? canonical : vfs::AbsoluteIRI(canonical, missing);
        } catch (const vfs::Exception&) {
            if (!existing.hasParent()) return folder.getLocation();
        } catch (const vfs::UnsupportedIRISchemeException&) {
            return folder.getLocation();
        }
        missing.insert(0, missing.empty() ? existing.getName() : existing.getName() + u'/');
        existing = existing.getParent();
    }
}

}  // namespace

boost::optional<ComponentIdentifier> GetClaimingPackage(const vfs::Folder& folder) {
    const auto state = packages::currentStateForServices();
    // Nothing is asked of a storage in which no package lies, a web server for one.
    if (!state->hasRootUnder(folder.getLocation().getScheme())) return boost::none;
    const packages::RegisteredPackage* const claimant = state->claimantOf(locationToClaim(folder));
    if (claimant == nullptr) return boost::none;
    return ComponentIdentifier(claimant->identifier);
}

std::shared_ptr<Velquist::KorvexComponents::IPackageRegistry> GetCurrentPackageRegistry() {
    (void)packages::currentStateForServices();
    return packages::packageRegistry();
}

}  // namespace korvex::io::filesystem::core
