// Which providers the environment has: one line each.
#include "runtime/storage/provider_registry.h"

#include "runtime/storage/location.h"
#include "runtime/storage/providers/http/web_provider.h"
#include "runtime/storage/providers/local/local_provider.h"
#include "runtime/storage/providers/memory/memory_provider.h"

namespace korvex::runtime::storage {

std::shared_ptr<foundation::storage::vfs::StorageSystem> makeStorageSystem() {
    const auto web = std::make_shared<WebProvider>();
    auto system = std::make_shared<foundation::storage::vfs::StorageSystem>();
    system->add(std::u16string(localScheme), std::make_shared<LocalProvider>());
    system->add(u"memory", std::make_shared<MemoryProvider>());
    system->add(u"http", web);
    system->add(u"https", web);
    return system;
}

}  // namespace korvex::runtime::storage
