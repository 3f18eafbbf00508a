// fl::filesystem: native paths by the running platform's style and the environment's current folder.
#include "platform/foundation_filesystem.h"

#include <type_traits>

#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"
#include "runtime/paths/path_text.h"
#include "runtime/text/encoding.h"

namespace fl::filesystem {

namespace paths = korvex::runtime::paths;
namespace dispatcher = korvex::runtime::dispatcher;
namespace vfs = foundation::storage::vfs;

std::u16string get_current_path() { return dispatcher::currentFolderPath(); }

std::u16string absolute(std::u16string path, const std::u16string& base) {
    if (paths::isAbsolute(path, paths::nativeStyle)) return path;
    if (paths::isAbsolute(base, paths::nativeStyle)) return paths::joined(base, path, paths::nativeStyle);
    if (!dispatcher::currentFolderExists()) throw PathNotFound();
    const std::u16string absoluteBase = paths::joined(get_current_path(), base, paths::nativeStyle);
    return paths::joined(absoluteBase, path, paths::nativeStyle);
}

std::u16string canonical(const std::u16string& path, const std::u16string& base) {
    // An absolute path, unlike a relative one, never reads as a text with a scheme.
    const vfs::Folder item(Velquist::PathManagement::GetIRIFromString(absolute(path, base)),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
    return vfs::fromAbsoluteIRI(item.getCanonicalLocation());
}

bool exists(const std::u16string& path) {
    if (path.empty()) return false;
    const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(absolute(path, u""));
    try {
        return vfs::exists(location, Velquist::KorvexStorageSystem::GetStorageSystemReference()) !=
               foundation::storage::provider::AsNeither;
    } catch (const vfs::Exception& error) {
        if (error.getErrorCode() == vfs::permissionDenied) throw AccessDenied(path);
        throw;
    }
}

std::filesystem::path system_path(const std::u16string& path) {
    // The empty path stands for nothing, as does every text that no name on disk reads as. A text with a NUL
    // would reach the system without what is behind it; a relative one, or a location, would be taken against
    // the folder of the process.
    const bool namesOnePlace =
        paths::isAbsolute(path, paths::nativeStyle) && path.find(u'\0') == std::u16string::npos;
    if (!namesOnePlace) return {};
    if constexpr (std::is_same_v<std::filesystem::path::value_type, char>) {
        return korvex::runtime::text::toBytes(path).value_or("");
    } else {
        return std::filesystem::path(path);
    }
}

namespace upath_constant {
const char16_t PATHNAME_SEPARATOR = paths::preferredSeparator(paths::nativeStyle);
}  // namespace upath_constant

namespace detail {

bool is_absolute(const std::u16string& path) { return paths::isAbsolute(path, paths::nativeStyle); }

std::u16string make_native_form(const std::u16string& path, bool keepTrailing) {
    return paths::nativeForm(path, keepTrailing, paths::nativeStyle);
}

std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& name,
                                    bool inNativeForm) {
    std::u16string path = paths::joined(base, name, paths::nativeStyle);
    return inNativeForm ? paths::nativeForm(path, true, paths::nativeStyle) : path;
}

std::u16string extract_filename(const std::u16string& path) {
    return std::u16string(paths::fileNameOf(path, paths::nativeStyle));
}

std::u16string extract_stem(const std::u16string& path) {
    return std::u16string(paths::stemOf(path, paths::nativeStyle));
}

std::u16string extract_extension(const std::u16string& path) {
    return std::u16string(paths::extensionOf(path, paths::nativeStyle));
}

}  // namespace detail
}  // namespace fl::filesystem
