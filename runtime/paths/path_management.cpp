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

/// Without network paths a location on another machine has none: read as a path, "//host/a" is on this one.
bool hasNativePath(const vfs::AbsoluteIRI::Parts& parts) {
    const bool isOnThisMachine = parts.host.empty() || paths::nativeStyle == paths::PathStyle::windows;
    return parts.scheme == storage::localScheme && isOnThisMachine;
}

}  // namespace

vfs::AbsoluteIRI GetIRIFromString(const std::u16string& text) {
    if (text.empty()) throw vfs::InvalidIRIException(text);
    if (vfs::hasIRIPrefix(text)) return vfs::AbsoluteIRI(text);
    if (paths::isAbsolute(text, paths::nativeStyle)) return localLocation(text);
    return localLocation(fl::filesystem::absolute(text, u""));
}

std::u16string GetStringFromIRI(const vfs::AbsoluteIRI& location) {
    return hasNativePath(location.parts()) ? vfs::fromAbsoluteIRI(location).text() : location.toString();
}

}  // namespace PathManagement

foundation::storage::vfs::StorageSystemReference KorvexStorageSystem::GetStorageSystemReference() {
    return foundation::storage::vfs::StorageSystemReference(korvex::runtime::storage::currentStorageSystem());
}

}  // namespace Velquist
