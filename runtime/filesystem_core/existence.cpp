// What stands at a location or a path, links told apart.
#include "platform/filesystem_core.h"
#include "platform/filesystem_shared.h"
#include "platform/path_management.h"

namespace korvex::io::filesystem::core {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

provider::ExistenceTypeExtended getExtendedExistenceType(const vfs::AbsoluteIRI& location,
                                                         bool tellsLinksApart) {
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    if (tellsLinksApart) return vfs::existsExtended(location, storage);
    switch (vfs::exists(location, storage)) {
        case provider::AsFile: return provider::ExtendedFile;
        case provider::AsFolder: return provider::ExtendedFolder;
        default: return provider::ExtendedNothing;
    }
}

bool isSymlink(provider::ExistenceTypeExtended type) noexcept {
    return type == provider::ExtendedLinkToFile || type == provider::ExtendedLinkToFolder ||
           type == provider::ExtendedBrokenLink;
}

SymbolicLinkType isSymlink(const std::u16string& text) {
    return filesystemSharedFcns::isSymlink(text) ? SymbolicLink : NoSymbolicLink;
}

}  // namespace korvex::io::filesystem::core
