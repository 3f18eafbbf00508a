// The bridges between path text and locations.
#include "platform/path_management.h"

#include "platform/foundation_filesystem.h"
#include "runtime/paths/path_style.h"
#include "runtime/storage/location.h"
#include "runtime/storage/storage_system.h"

namespace Velquist {

namespace PathManagement {

namespace paths = korvex::runtime::paths;
namespace storage = korvex::runtime::storage;
namespace vfs = foundation::storage::vfs;

namespace {

vfs::AbsoluteIRI localLocation(const std::u16string& absolutePath) {
    paths::LocationPath local = paths::toLocationPath(absolutePath, paths::nativeStyle);
    return storage::makeLocation(std::u16string(storage::localScheme), std::move(local.host),
                                 std::move(local.path));
}

}  // namespace

vfs::AbsoluteIRI GetIRIFromString(const std::u16string& text) {
    if (text.empty()) throw vfs::InvalidIRIException(text);
    if (vfs::hasIRIPrefix(text)) return vfs::AbsoluteIRI(text);
    if (paths::isAbsolute(text, paths::nativeStyle)) return localLocation(text);
    return localLocation(fl::filesystem::absolute(text, u""));
}

std::u16string GetStringFromIRI(const vfs::AbsoluteIRI& location) {
    if (location.parts().scheme != storage::localScheme) return location.toString();
    return vfs::fromAbsoluteIRI(location);
}

}  // namespace PathManagement

foundation::storage::vfs::StorageSystemReference KorvexStorageSystem::GetStorageSystemReference() {
    return foundation::storage::vfs::StorageSystemReference(korvex::runtime::storage::currentStorageSystem());
}

}  // namespace Velquist
