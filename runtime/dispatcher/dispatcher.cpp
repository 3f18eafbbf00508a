// The dispatcher: the one object through which commands reach the running environment.
#include "platform/dispatcher.h"

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/search_path_lookup.h"
#include "runtime/dispatcher/search_path_manager.h"

namespace {

using Velquist::current_working_folder::FailedToAbsolutizeException;
using Velquist::current_working_folder::ICurrentWorkingFolder;
namespace vfs = foundation::storage::vfs;
namespace environment = korvex::runtime::dispatcher;

class CurrentWorkingFolder : public ICurrentWorkingFolder {
public:
    vfs::Folder get() const override {
        if (!environment::currentFolderExists()) throw fl::filesystem::PathNotFound();
        return vfs::Folder(Velquist::PathManagement::GetIRIFromString(environment::currentFolderPath()),
                           Velquist::KorvexStorageSystem::GetStorageSystemReference());
    }
    vfs::AbsoluteIRI absolutize(const std::u16string& text) const override {
        try {
            return Velquist::PathManagement::GetIRIFromString(text);
        } catch (const fl::filesystem::PathNotFound&) {
            throw FailedToAbsolutizeException(text);
        } catch (const vfs::InvalidIRIException&) {
            throw FailedToAbsolutizeException(text);
        }
    }
};

class Dispatcher : public Kdispatcher {
public:
    ICurrentWorkingFolder& GetCurrentWorkingFolder() override { return currentFolder_; }
    Velquist::PathManagement::IMainSearchPathManager& GetMainSearchPathManager() override {
        return searchPathManager_;
    }
    std::shared_ptr<const Velquist::PathManagement::IPath> GetCurrentPath() override {
        return environment::currentPathForLookup();
    }
    int get_iExtension(dispatcher::ustring_namehash::Key extension, bool isCaseExact) const override {
        return environment::numberOfSourceExtension(*extension, isCaseExact);
    }

private:
    CurrentWorkingFolder currentFolder_;
    environment::MainSearchPathManager searchPathManager_;
};

}  // namespace

Kdispatcher& Kdispatcher::getDispatcher() {
    static Dispatcher dispatcher;
    return dispatcher;
}

Velquist::PathManagement::IPerKVMEventManager& GetPerKVMEventManager() {
    static environment::PerKVMEventManager manager;
    return manager;
}
