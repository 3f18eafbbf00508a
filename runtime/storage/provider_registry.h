// Which providers the environment has.
#pragma once

#include <memory>

#include "runtime/storage/storage_system.h"

namespace korvex::runtime::storage {

/// A storage system with every provider of the environment.
std::shared_ptr<foundation::storage::vfs::StorageSystem> makeStorageSystem();

}  // namespace korvex::runtime::storage
