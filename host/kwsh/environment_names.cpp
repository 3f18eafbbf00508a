// Folders are listed by their storage; what cannot be had is just not offered.
#include "host/kwsh/environment_names.h"

#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/packages/package_registry.h"

namespace korvex::host {

namespace vfs = foundation::storage::vfs;
using Velquist::PathManagement::GetIRIFromString;

namespace {

/// The entry's name as it is written behind its folder: in a location with percent codes.
std::u16string nameBehind(const vfs::AbsoluteIRI& location, bool isInLocation) {
    if (!isInLocation) return location.getName();
    const std::u16string& text = location.toString();
    return text.substr(text.rfind(u'/') + 1);
}

}  // namespace

std::vector<std::u16string> EnvironmentNames::variables() const {
    std::vector<std::u16string> names;
    for (const auto& [name, value] : workspace_.variables)
        names.push_back(widen(name));
    return names;
}

std::vector<std::u16string> EnvironmentNames::packages() const {
    std::vector<std::u16string> names;
    try {
        for (const runtime::packages::RegisteredPackage& package : runtime::packages::registeredPackages())
            names.push_back(package.name);
    } catch (const std::exception&) {
        // A registry that cannot be read has nothing to offer.
    }
    return names;
}

std::vector<FolderEntry> EnvironmentNames::entries(const std::u16string& folder) const {
    std::vector<FolderEntry> found;
    try {
        const vfs::AbsoluteIRI location = GetIRIFromString(folder.empty() ? u"." : folder);
        const vfs::Folder listed(location, Velquist::KorvexStorageSystem::GetStorageSystemReference());
        const bool isInLocation = vfs::hasIRIPrefix(folder);
        for (const vfs::ListEntry& entry : listed.listAll(u"")) {
            const bool isFolder = boost::get<vfs::Folder>(&entry.getFileOrFolder()) != nullptr;
            found.push_back({nameBehind(entry.getLocation(), isInLocation), isFolder});
        }
    } catch (const std::exception&) {
        found.clear();
    }
    return found;
}

}  // namespace korvex::host
