// The services library's helpers for path text, by the running platform's style.
#include "platform/filesystem_shared.h"

#include "platform/filesystem_core.h"
#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "platform/storage_utility.h"
#include "platform/storage_vfs.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/storage/location.h"

namespace filesystemSharedFcns {

namespace paths = korvex::runtime::paths;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using Velquist::KorvexStorageSystem;
using Velquist::PathManagement::GetIRIFromString;

namespace {

/// Where the path of a text with a scheme ends. Behind the path of a web location there may be a query and a
/// fragment; in any other location `?` and `#` are units of a name like all others.
std::size_t endOfPath(const std::u16string& text) {
    std::u16string scheme = text.substr(0, text.find(u':'));
    korvex::io::filesystem::core::makeLowerCase(scheme);
    return korvex::runtime::storage::isWebScheme(scheme) ? text.find_first_of(u"?#") : text.size();
}

}  // namespace

bool containsDotOrDotDotExpression(const std::u16string& text) {
    if (!vfs::hasIRIPrefix(text)) return paths::hasDotComponent(text, paths::nativeStyle);
    // Cut first: an escaped `?` or `#` ends no path.
    std::u16string decoded = text.substr(0, endOfPath(text));
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
        const vfs::AbsoluteIRI location = GetIRIFromString(text);
        // The web has no links, and is not asked: an answer could take long.
        if (korvex::runtime::storage::isWebScheme(location.parts().scheme)) return false;
        switch (vfs::existsExtended(location, KorvexStorageSystem::GetStorageSystemReference())) {
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
