// The services library's helpers for path text, by the running platform's style.
#include "platform/filesystem_shared.h"

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"

namespace filesystemSharedFcns {

namespace paths = korvex::runtime::paths;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using Velquist::KorvexStorageSystem;
using Velquist::PathManagement::GetIRIFromString;

bool containsDotOrDotDotExpression(const std::u16string& text) {
    if (!vfs::hasIRIPrefix(text)) return paths::hasDotComponent(text, paths::nativeStyle);
    std::u16string decoded = text;
    foundation::storage::utility::decodeURL(decoded);
    return paths::hasDotComponent(decoded, paths::nativeStyle);
}

bool isPathSeparator(const char16_t& unit) noexcept { return paths::isSeparator(unit, paths::nativeStyle); }

bool startsWithSlashSlashOnWindows(const std::u16string& text) noexcept {
    return paths::startsWithTwoSeparators(text, paths::nativeStyle);
}

bool exists(const std::u16string& path) {
    if (path.empty()) return false;
    return vfs::exists(GetIRIFromString(fl::filesystem::absolute(path, u"")),
                       KorvexStorageSystem::GetStorageSystemReference()) != provider::AsNeither;
}

bool isSymlink(const std::u16string& text) {
    try {
        switch (
            vfs::existsExtended(GetIRIFromString(text), KorvexStorageSystem::GetStorageSystemReference())) {
            case provider::ExtendedLinkToFile:
            case provider::ExtendedLinkToFolder:
            case provider::ExtendedBrokenLink: return true;
            default: return false;
        }
    } catch (const foundation::core::except::IException&) {
        return false;  // a text that is no location, a scheme nobody serves, a storage that fails
    }
}

void relativeToAbsolute(std::u16string& path) { path = fl::filesystem::absolute(path, u""); }

void trimTrailingSlash(std::u16string& path) { paths::dropTrailingSeparators(path, paths::nativeStyle); }

void replaceSlashesOnWindows(std::u16string& path) { paths::replaceSlashes(path, paths::nativeStyle); }

void handleSingleDots(std::u16string& path) { paths::removeSingleDots(path, paths::nativeStyle); }

void handleDotDots(std::u16string& path) { paths::resolveDoubleDots(path, paths::nativeStyle); }

}  // namespace filesystemSharedFcns
