// The storage system and the one that the environment uses at present.
#include "runtime/storage/storage_system.h"

#include <algorithm>
#include <utility>

#include "runtime/storage/location.h"
#include "runtime/storage/provider_registry.h"

namespace foundation::storage::vfs {

void StorageSystem::add(std::u16string scheme, std::shared_ptr<Provider> provider) {
    const auto earlier = std::find_if(providers_.begin(), providers_.end(),
                                      [&](const auto& entry) { return entry.first == scheme; });
    if (earlier != providers_.end()) {
        earlier->second = std::move(provider);
    } else {
        providers_.emplace_back(std::move(scheme), std::move(provider));
    }
}

StorageSystem::Provider* StorageSystem::find(const AbsoluteIRI& location) const noexcept {
    for (const auto& [scheme, provider] : providers_) {
        if (scheme == location.parts().scheme) return provider.get();
    }
    return nullptr;
}

StorageSystem::Provider& StorageSystem::provider(const AbsoluteIRI& location) const {
    Provider* const found = find(location);
    if (found == nullptr) throw UnsupportedIRISchemeException(location.getScheme());
    return *found;
}

}  // namespace foundation::storage::vfs

namespace korvex::runtime::storage {

namespace {

using System = std::shared_ptr<const foundation::storage::vfs::StorageSystem>;

System& currentSlot() {
    static System system = makeStorageSystem();
    return system;
}

}  // namespace

System currentStorageSystem() { return currentSlot(); }

ScopedStorageSystem::ScopedStorageSystem(System system)
    : earlier_(std::exchange(currentSlot(), std::move(system))) {}

ScopedStorageSystem::~ScopedStorageSystem() { currentSlot() = std::move(earlier_); }

}  // namespace korvex::runtime::storage
