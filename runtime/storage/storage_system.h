// The storage system: which provider serves which scheme.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/storage_vfs.h"
#include "runtime/storage/provider.h"

namespace foundation::storage::vfs {

class StorageSystem {
public:
    using Provider = korvex::runtime::storage::Provider;

    /// Registers a provider for a scheme (small letters), in place of any earlier one.
    void add(std::u16string scheme, std::shared_ptr<Provider> provider);

    /// The provider of the location's scheme; null when there is none.
    Provider* find(const AbsoluteIRI& location) const noexcept;
    /// The same; raises `UnsupportedIRISchemeException` when there is none.
    Provider& provider(const AbsoluteIRI& location) const;

private:
    /// In the order of registration: few, and the first is asked for nearly always.
    std::vector<std::pair<std::u16string, std::shared_ptr<Provider>>> providers_;
};

}  // namespace foundation::storage::vfs

namespace korvex::runtime::storage {

/// The environment's storage system with all its providers.
std::shared_ptr<const foundation::storage::vfs::StorageSystem> currentStorageSystem();

/// Puts another storage system in place for the length of a scope, as tests need it.
class ScopedStorageSystem {
public:
    explicit ScopedStorageSystem(std::shared_ptr<const foundation::storage::vfs::StorageSystem> system);
    ~ScopedStorageSystem();
    ScopedStorageSystem(const ScopedStorageSystem&) = delete;
    ScopedStorageSystem& operator=(const ScopedStorageSystem&) = delete;

private:
    std::shared_ptr<const foundation::storage::vfs::StorageSystem> earlier_;
};

}  // namespace korvex::runtime::storage
