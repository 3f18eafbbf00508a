// The dispatcher: the running environment as the commands see it.
#pragma once

#include "platform/path_management.h"
#include "platform/storage_vfs.h"

namespace Velquist::current_working_folder {

/// The current folder of the environment. It is not the process's working folder.
class ICurrentWorkingFolder {
public:
    virtual ~ICurrentWorkingFolder() = default;
    /// The folder, by value. Raises `fl::filesystem::PathNotFound` when it does not exist any more.
    virtual foundation::storage::vfs::Folder get() const = 0;
};

}  // namespace Velquist::current_working_folder

class Kdispatcher {
public:
    static Kdispatcher& getDispatcher();

    virtual ~Kdispatcher() = default;
    virtual Velquist::current_working_folder::ICurrentWorkingFolder& GetCurrentWorkingFolder() = 0;
    virtual Velquist::PathManagement::IMainSearchPathManager& GetMainSearchPathManager() = 0;
};

/// The event manager of the running interpreter.
Velquist::PathManagement::IPerKVMEventManager& GetPerKVMEventManager();

/// Drops the cached functions of a source file, given as a native path that ends in NUL. A file of which
/// nothing is cached changes nothing.
void kdClearFunctionsByName(const char16_t* path);
