// The registry as it was read, kept until the file changes: it is asked for every file of a copy.
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/packages.h"
#include "runtime/packages/package_registry.h"

namespace korvex::runtime::packages {

/// Immutable, so that it is shared.
class RegistryState {
public:
    explicit RegistryState(const nlohmann::json& document);

    bool isEnabled() const noexcept { return isEnabled_; }
    const std::vector<RegisteredPackage>& packages() const noexcept { return packages_; }
    /// Null when there is none.
    const RegisteredPackage* packageOf(
        const Velquist::KorvexComponents::ComponentIdentifier& identifier) const;
    /// The package whose root a canonical location is, or lies below; the innermost of several. Null when
    /// there is none.
    const RegisteredPackage* claimantOf(const foundation::storage::vfs::AbsoluteIRI& location) const;
    /// Whether a package has its root under this scheme.
    bool hasRootUnder(const std::u16string& scheme) const;

private:
    /// For look-ups by a part of a text, without a copy of it.
    struct TextHash : std::hash<std::u16string_view> {
        using is_transparent = void;
    };
    using IndexByText = std::unordered_map<std::u16string, std::size_t, TextHash, std::equal_to<>>;

    const RegisteredPackage* find(const IndexByText& index, std::u16string_view text) const;

    bool isEnabled_;
    std::vector<RegisteredPackage> packages_;
    IndexByText byIdentifier_;
    IndexByText byRoot_;
    std::vector<std::u16string> schemes_;
};

/// What is registered now. Costs one question to the system while nothing has changed. Raises
/// `ConfigurationError`.
std::shared_ptr<const RegistryState> currentState();

/// The same for the environment's own interfaces: raises `vfs::Exception`, `ioError` at the registry's file.
std::shared_ptr<const RegistryState> currentStateForServices();

/// Changes the registry's file. Raises `ConfigurationError`; nothing changes then.
void changeRegistry(const std::function<void(nlohmann::json&)>& change);

}  // namespace korvex::runtime::packages
