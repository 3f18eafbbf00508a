// The environment's interfaces to packages, over the registry's state.
#include "runtime/packages/package_services.h"

#include "runtime/configuration/stored_document.h"
#include "runtime/packages/registry_state.h"

namespace korvex::runtime::packages {

namespace vfs = foundation::storage::vfs;
using namespace Velquist::KorvexComponents;

namespace {

class Package : public IPackage {
public:
    explicit Package(RegisteredPackage package) : package_(std::move(package)) {}

    bool isEditable() const override { return package_.isEditable; }
    vfs::CanonicalAbsoluteIRI getRootFolder() const override {
        return vfs::CanonicalAbsoluteIRI(vfs::AbsoluteIRI(package_.root));
    }

private:
    RegisteredPackage package_;
};

class PackageRegistry : public IPackageRegistry {
public:
    std::shared_ptr<IPackage> package(const ComponentIdentifier& identifier) const override {
        const auto state = currentStateForServices();
        const RegisteredPackage* const found = state->packageOf(identifier);
        return found == nullptr ? nullptr : std::make_shared<Package>(*found);
    }
    std::u16string name(const ComponentIdentifier& identifier) const override {
        const auto state = currentStateForServices();
        const RegisteredPackage* const found = state->packageOf(identifier);
        return found == nullptr ? std::u16string() : found->name;
    }
};

}  // namespace

std::shared_ptr<IPackageRegistry> packageRegistry() {
    static const auto registry = std::make_shared<PackageRegistry>();
    return registry;
}

}  // namespace korvex::runtime::packages

namespace Velquist::KorvexComponents {

bool KPMFeature::IsOn() {
    try {
        const auto state = korvex::runtime::packages::currentState();
        return state->isEnabled() && !state->packages().empty();
    } catch (const korvex::runtime::configuration::ConfigurationError&) {
        // Nobody can tell. The next question to the registry says what is wrong, to somebody who expects it.
        return true;
    }
}

bool ComponentFeature::IsOn() { return KPMFeature::IsOn(); }

// Before every other object of the library, so that one that is made from it at the start finds it made.
[[gnu::init_priority(101)]] const std::u16string Constants::PackageDefStr = u"kpackage.json";

}  // namespace Velquist::KorvexComponents
