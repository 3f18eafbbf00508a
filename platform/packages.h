// Packages: folders that somebody installed as a whole, whose contents should not be changed behind their
// back.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/storage_vfs.h"

namespace Velquist::KorvexComponents {

/// The identity of a package.
class ComponentIdentifier {
public:
    explicit ComponentIdentifier(std::u16string text) : text_(std::move(text)) {}
    const std::u16string& text() const noexcept { return text_; }
    bool operator==(const ComponentIdentifier&) const = default;

private:
    std::u16string text_;
};

/// The package manager.
class KPMFeature {
public:
    /// Whether it is in force. Never is while no package is registered.
    static bool IsOn();
};

/// The finding of functions and folders in packages.
class ComponentFeature {
public:
    /// Whether it is in force: while the package manager is.
    static bool IsOn();
};

namespace Constants {
/// The file name of a package's definition file.
extern const std::u16string PackageDefStr;
}  // namespace Constants

/// The order of the virtual operations, here and below, is the order of the environment's binary interface.
class IPackage {
public:
    /// Whether its contents are meant to be worked on.
    virtual bool isEditable() const = 0;
    virtual foundation::storage::vfs::CanonicalAbsoluteIRI getRootFolder() const = 0;
    virtual ~IPackage() = default;
};

/// The packages that are registered. Every operation may raise `vfs::Exception` when the registry cannot be
/// read.
class IPackageRegistry {
public:
    virtual ~IPackageRegistry() = default;
    /// The package of an identifier; null when it is not registered any more.
    virtual std::shared_ptr<IPackage> package(const ComponentIdentifier& identifier) const = 0;
    /// The name of a package; empty when it is not registered any more.
    virtual std::u16string name(const ComponentIdentifier& identifier) const = 0;
};

}  // namespace Velquist::KorvexComponents
