// The current folder of the environment.
#include "runtime/dispatcher/current_folder.h"

#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/working_folder.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

std::u16string& currentPath() {
    static std::u16string path = processWorkingFolder();
    return path;
}

}  // namespace

std::u16string currentFolderPath() { return currentPath(); }

bool currentFolderExists() {
    if (currentPath().empty()) return false;
    const vfs::Folder folder(Velquist::PathManagement::GetIRIFromString(currentPath()),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    return folder.folderExists();
}

void setCurrentFolderPath(const std::u16string& path) {
    const vfs::Folder named(Velquist::PathManagement::GetIRIFromString(path),
                            Velquist::KorvexStorageSystem::GetStorageSystemReference());
    const vfs::Folder folder(named.getCanonicalLocation(), named.storage());
    if (!folder.folderExists())
        throw vfs::Exception(vfs::invalidLocation, folder.getLocation(), u"no folder");
    // Looking at the folder from inside needs the permission to enter it.
    if (!vfs::Folder(folder, u".").folderExists()) {
        throw vfs::Exception(vfs::permissionDenied, folder.getLocation(), u"enter folder");
    }
    currentPath() = vfs::fromAbsoluteIRI(folder.getLocation());
}

}  // namespace korvex::runtime::dispatcher
