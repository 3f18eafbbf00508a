// A folder with all folders above it that are missing.
#include "runtime/storage/providers/local/posix/folder_chain.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"
#include "runtime/storage/providers/local/posix/place.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

namespace {

vfs::AbsoluteIRI levelsAbove(vfs::AbsoluteIRI location, std::size_t levels) {
    for (; levels > 0; --levels)
        location = location.getParent();
    return location;
}

/// Makes one folder of the chain if it is missing, and enters it. 0, or the errno: EEXIST for what is no
/// folder.
int enterOrCreate(FileDescriptor& above, const std::string& name, bool& isNew) {
    // Below a folder that was just made nothing can stand, unless somebody else is at work there too.
    if (!isNew && enterFolder(above, name) == 0) return 0;
    isNew = ::mkdirat(above.get(), name.c_str(), 0777) == 0;
    if (!isNew && errno != EEXIST) return errno;
    const int systemError = enterFolder(above, name);
    return !isNew && meansNothingThere(systemError) ? EEXIST : systemError;
}

}  // namespace

void createFolderChain(const vfs::AbsoluteIRI& folder) {
    const std::vector<std::string> names = componentsOf(nativePathOf(folder));
    FileDescriptor above;
    bool isNew = false;
    int systemError = names.empty() ? EEXIST : enterFolder(above, "/");
    std::size_t level = 0;
    for (; systemError == 0 && level + 1 < names.size(); ++level)
        systemError = enterOrCreate(above, names[level], isNew);
    if (systemError == 0 && ::mkdirat(above.get(), names[level++].c_str(), 0777) == 0) return;
    if (systemError == 0) systemError = errno;
    raiseSystemError(systemError, levelsAbove(folder, names.size() - level), u"creating");
}

}  // namespace korvex::runtime::storage::posix
