// The packages that are registered on this machine, as the host works on them.
//
// They are kept in "packages.json" in the configuration folder. Other processes see a change at once.
#pragma once

#include <string>
#include <vector>

#include "platform/storage_vfs.h"

namespace korvex::runtime::packages {

struct RegisteredPackage {
    std::u16string identifier;  ///< unique, made when the package is registered
    std::u16string name;
    std::u16string root;  ///< location text, canonical
    bool isEditable = false;

    bool operator==(const RegisteredPackage&) const = default;
};

/// In the order of their registration. Raises `ConfigurationError`.
std::vector<RegisteredPackage> registeredPackages();

/// Registers an existing folder as a package, on disk when this returns. `folder` is a path, taken against
/// the current folder, or a text with a scheme. A package of that name or with that root is replaced: the new
/// one comes last and has an identifier of its own. Raises `vfs::Exception` when there is no such folder
/// (`resourceNotFound`, `invalidLocation` for a file), what `GetIRIFromString` raises,
/// `UnsupportedIRISchemeException`, and `ConfigurationError`; nothing changes then.
void registerPackage(const std::u16string& folder, const std::u16string& name, bool isEditable);

/// Takes the package of a name out of the registry; its folder stays. False when there is none. Raises
/// `ConfigurationError`; nothing changes then.
bool unregisterPackage(const std::u16string& name);

/// Switches the package manager off and on again, for all runs; it starts switched on. Both raise
/// `ConfigurationError`.
void setPackageManagerEnabled(bool isEnabled);
bool isPackageManagerEnabled();

}  // namespace korvex::runtime::packages
