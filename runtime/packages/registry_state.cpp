// Reading the registry once for each of its changes.
#include "runtime/packages/registry_state.h"

#include <algorithm>
#include <mutex>

#include "platform/path_management.h"
#include "runtime/configuration/stored_document.h"
#include "runtime/packages/registry_document.h"

namespace korvex::runtime::packages {

namespace vfs = foundation::storage::vfs;
using configuration::ConfigurationError;
using configuration::StoredDocument;

namespace {

struct KeptRegistry {
    StoredDocument document{"packages.json", isRegistryDocument};
    // Recursive, for reading may warn about a damaged file, and who shows the warning may ask something.
    std::recursive_mutex guard;
    std::shared_ptr<const RegistryState> state;
};

KeptRegistry& registry() {
    static KeptRegistry keptRegistry;
    return keptRegistry;
}

}  // namespace

RegistryState::RegistryState(const nlohmann::json& document)
    : isEnabled_(isEnabledIn(document)), packages_(packagesIn(document)) {
    for (std::size_t index = 0; index < packages_.size(); ++index) {
        const vfs::AbsoluteIRI root(packages_[index].root);
        packages_[index].root = root.toString();
        byIdentifier_.emplace(packages_[index].identifier, index);
        byRoot_.emplace(packages_[index].root, index);
        if (!hasRootUnder(root.getScheme())) schemes_.push_back(root.getScheme());
    }
}

const RegisteredPackage* RegistryState::packageOf(
    const Velquist::KorvexComponents::ComponentIdentifier& identifier) const {
    return find(byIdentifier_, identifier.text());
}

const RegisteredPackage* RegistryState::claimantOf(const vfs::AbsoluteIRI& location) const {
    const std::u16string_view text = location.toString();
    const std::size_t path = text.find(u'/', text.find(u"://") + 3);
    const std::size_t endOfRoot = path + 1;
    // Component by component upwards, the root with its separator last.
    for (std::size_t end = text.size();; end = std::max(text.rfind(u'/', end - 1), endOfRoot)) {
        const RegisteredPackage* const found = find(byRoot_, text.substr(0, end));
        if (found != nullptr || end == endOfRoot) return found;
    }
}

const RegisteredPackage* RegistryState::find(const IndexByText& index, std::u16string_view text) const {
    const auto found = index.find(text);
    return found == index.end() ? nullptr : &packages_[found->second];
}

bool RegistryState::hasRootUnder(const std::u16string& scheme) const {
    return std::find(schemes_.begin(), schemes_.end(), scheme) != schemes_.end();
}

std::shared_ptr<const RegistryState> currentState() {
    const std::lock_guard lock(registry().guard);
    if (!registry().state || registry().document.isOutOfDate()) {
        registry().state = std::make_shared<const RegistryState>(registry().document.read());
    }
    return registry().state;
}

std::shared_ptr<const RegistryState> currentStateForServices() {
    try {
        return currentState();
    } catch (const ConfigurationError& error) {
        throw vfs::Exception(vfs::ioError,
                             Velquist::PathManagement::GetIRIFromString(registry().document.path()),
                             u"package registry", error.what());
    }
}

void changeRegistry(const std::function<void(nlohmann::json&)>& change) {
    const std::lock_guard lock(registry().guard);
    registry().state = std::make_shared<const RegistryState>(registry().document.update(change));
}

}  // namespace korvex::runtime::packages
