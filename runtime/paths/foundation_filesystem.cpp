// fl::filesystem: native paths by the running platform's style and the environment's current folder.
#include "platform/foundation_filesystem.h"

#include "runtime/dispatcher/current_folder.h"
#include "runtime/paths/path_style.h"

namespace fl::filesystem {

namespace paths = korvex::runtime::paths;
namespace dispatcher = korvex::runtime::dispatcher;

std::u16string get_current_path() { return dispatcher::currentFolderPath(); }

std::u16string absolute(std::u16string path, const std::u16string& base) {
    if (paths::isAbsolute(path, paths::nativeStyle)) return path;
    if (paths::isAbsolute(base, paths::nativeStyle)) return paths::joined(base, path, paths::nativeStyle);
    if (!dispatcher::currentFolderExists()) throw PathNotFound();
    const std::u16string absoluteBase = paths::joined(get_current_path(), base, paths::nativeStyle);
    return paths::joined(absoluteBase, path, paths::nativeStyle);
}

namespace upath_constant {
const char16_t PATHNAME_SEPARATOR = paths::preferredSeparator(paths::nativeStyle);
}  // namespace upath_constant

namespace detail {

bool is_absolute(const std::u16string& path) { return paths::isAbsolute(path, paths::nativeStyle); }

std::u16string make_native_form(const std::u16string& path, bool keepTrailing) {
    return paths::nativeForm(path, keepTrailing, paths::nativeStyle);
}

}  // namespace detail
}  // namespace fl::filesystem
