// The current folder of the environment.
#include "runtime/dispatcher/current_folder.h"

#include "platform/path_management.h"
#include "platform/storage_vfs.h"
#include "runtime/dispatcher/working_folder.h"
#include "runtime/storage/location.h"

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
    try {
        return folder.folderExists();
    } catch (const vfs::Exception&) {
        // A folder that cannot be reached any more is as good as gone.
        return false;
    }
}

void setCurrentFolderPath(const std::u16string& path) {
    const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(path);
    if (location.getScheme() != storage::localScheme)
        throw vfs::Exception(vfs::unsupportedOperation, location, u"cd");
    const vfs::Folder named(location, Velquist::KorvexStorageSystem::GetStorageSystemReference());
    const vfs::Folder folder(named.getCanonicalLocation(), named.storage());
    if (!folder.folderExists()) {
        throw vfs::Exception(vfs::invalidLocation, folder.getLocation(), u"no folder");
    }
    // Looking at the folder from inside raises `permissionDenied` when it may not be entered.
    (void)vfs::Folder(folder, u".").folderExists();
    currentPath() = vfs::fromAbsoluteIRI(folder.getLocation());
}

}  // namespace korvex::runtime::dispatcher
