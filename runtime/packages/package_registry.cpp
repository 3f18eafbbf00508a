// Registering and unregistering packages.
#include "runtime/packages/package_registry.h"

#include <random>

#include "platform/path_management.h"
#include "runtime/packages/registry_document.h"
#include "runtime/packages/registry_state.h"

namespace korvex::runtime::packages {

namespace vfs = foundation::storage::vfs;

namespace {

/// 128 bits by chance.
std::u16string newIdentifier() {
    constexpr std::u16string_view digits = u"0123456789abcdef";
    constexpr std::size_t length = 32;
    std::random_device random;
    std::u16string identifier;
    while (identifier.size() < length) {
        identifier += digits[random() % digits.size()];
    }
    return identifier;
}

/// The canonical location of an existing folder.
vfs::CanonicalAbsoluteIRI rootOf(const std::u16string& folder) {
    const vfs::Folder named(Velquist::PathManagement::GetIRIFromString(folder),
                            Velquist::KorvexStorageSystem::GetStorageSystemReference());
    const vfs::CanonicalAbsoluteIRI root = named.getCanonicalLocation();
    if (!vfs::Folder(root, named.storage()).folderExists()) {
        throw vfs::Exception(vfs::invalidLocation, root, u"no folder");
    }
    return root;
}

}  // namespace

std::vector<RegisteredPackage> registeredPackages() { return currentState()->packages(); }

void registerPackage(const std::u16string& folder, const std::u16string& name, bool isEditable) {
    const RegisteredPackage package{newIdentifier(), name, rootOf(folder).toString(), isEditable};
    changeRegistry([&](nlohmann::json& document) {
        removePackagesNamed(document, package.name);
        removePackagesRootedAt(document, package.root);
        appendPackageTo(document, package);
    });
}

bool unregisterPackage(const std::u16string& name) {
    std::size_t count = 0;
    changeRegistry([&](nlohmann::json& document) { count = removePackagesNamed(document, name); });
    return count > 0;
}

void setPackageManagerEnabled(bool isEnabled) {
    changeRegistry([&](nlohmann::json& document) { setEnabledIn(document, isEnabled); });
}

bool isPackageManagerEnabled() { return currentState()->isEnabled(); }

}  // namespace korvex::runtime::packages
