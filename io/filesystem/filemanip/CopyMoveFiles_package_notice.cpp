// Whether an operation changes the contents of an installed package behind its back.
#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"

#include <memory>

#include "platform/filesystem_core.h"
#include "platform/packages.h"
#include "platform/path_management.h"

namespace korvex::filemanip {

namespace vfs = foundation::storage::vfs;
namespace core = korvex::io::filesystem::core;
using Velquist::KorvexComponents::ComponentIdentifier;
using Velquist::KorvexComponents::IPackage;
using Velquist::KorvexComponents::IPackageRegistry;
using Velquist::KorvexComponents::KPMFeature;
using Velquist::PathManagement::GetStringFromIRI;

namespace {

/// The package that claims a folder, with its registry.
struct Claim {
    std::shared_ptr<IPackageRegistry> registry;
    ComponentIdentifier owner;
    std::shared_ptr<IPackage> package;

    std::u16string packageName() const { return registry->name(owner); }
};

/// None, too, for a package that another process takes out of the registry meanwhile.
boost::optional<Claim> claimOf(const vfs::Folder& folder) {
    const boost::optional<ComponentIdentifier> owner = core::GetClaimingPackage(folder);
    if (!owner) return boost::none;
    const std::shared_ptr<IPackageRegistry> registry = core::GetCurrentPackageRegistry();
    const std::shared_ptr<IPackage> package = registry->package(*owner);
    if (!package) return boost::none;
    return Claim{registry, *owner, package};
}

/// A folder of resources right below the package's root, at its old place.
bool isResourcesAtRoot(const vfs::Folder& folder, PackageNoticeMode mode,
                       Velquist::PathManagement::PathEntryType type, const IPackage& package) {
    return type == Velquist::PathManagement::ResourcesFolder && mode == PackageNoticeMode::fromPackage &&
           folder.hasParent() && folder.getParent().getCanonicalLocation() == package.getRootFolder();
}

}  // namespace

bool mayGiveNotices(const vfs::Folder& folder) {
    try {
        return KPMFeature::IsOn() && core::GetClaimingPackage(folder);
    } catch (...) {
        return true;  // the first file will tell
    }
}

boost::optional<FilePackageNotice> noticeFileInPackage(const vfs::File& file, PackageNoticeMode mode) {
    if (!KPMFeature::IsOn()) return boost::none;
    const vfs::Folder parent = file.getParent();
    const boost::optional<Claim> claim = claimOf(parent);
    if (!claim) return boost::none;
    const bool isDefinition = file.getName() == Velquist::KorvexComponents::Constants::PackageDefStr;
    if (claim->package->isEditable() && !(isDefinition && mode != PackageNoticeMode::intoPackage)) {
        return boost::none;
    }
    const vfs::AbsoluteIRI& shown =
        mode == PackageNoticeMode::fromPackage ? file.getLocation() : parent.getLocation();
    return FilePackageNotice{GetStringFromIRI(shown), claim->packageName()};
}

boost::optional<FolderPackageNotice> noticeFolderInPackage(const vfs::Folder& folder,
                                                           PackageNoticeMode mode) {
    if (!KPMFeature::IsOn()) return boost::none;
    if (mode == PackageNoticeMode::intoPackage && !folder.hasParent()) return boost::none;
    const vfs::Folder asked = mode == PackageNoticeMode::fromPackage ? folder : folder.getParent();
    const boost::optional<Claim> claim = claimOf(asked);
    if (!claim) return boost::none;
    bool editable = false;
    if (claim->package->isEditable()) {
        const auto type =
            Velquist::PathManagement::GetPathEntryTypeFromBaseName(folder.getLocation().getName());
        const bool atRoot = isResourcesAtRoot(folder, mode, type, *claim->package);
        if (type != Velquist::PathManagement::OrdinaryFolder && !atRoot) return boost::none;
        editable = !atRoot;
    }
    return FolderPackageNotice{GetStringFromIRI(asked.getLocation()), claim->packageName(), editable};
}

}  // namespace korvex::filemanip
