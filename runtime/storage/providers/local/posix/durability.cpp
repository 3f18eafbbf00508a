// Having what was written reach the storage.
#include "runtime/storage/providers/local/posix/durability.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

namespace {

/// Some file systems have nothing that could be waited for, and say so.
int errorUnlessUnsupported(int result) noexcept {
    const bool isUnsupported = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
    return result == 0 || isUnsupported ? 0 : errno;
}

}  // namespace

int syncFile(int file) noexcept { return errorUnlessUnsupported(::fsync(file)); }

int syncFolderOf(int folder, const std::string& name) {
    const std::string path = beside({folder, name.c_str()}, ".");
    const FileDescriptor opened(::openat(folder, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return errno == EACCES ? syncAll() : errno;
    return syncFile(opened.get());
}

int syncFileSystem(int file) noexcept { return errorUnlessUnsupported(::syncfs(file)); }

int syncAll() noexcept {
    ::sync();
    return 0;
}

}  // namespace korvex::runtime::storage::posix
