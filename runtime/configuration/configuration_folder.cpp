// The configuration folder of this run.
#include "runtime/configuration/configuration_folder.h"

#include <mutex>

#include "runtime/configuration/unkept_documents.h"

namespace korvex::runtime::configuration {

namespace {

struct FolderOfThisRun {
    std::mutex guard;
    std::u16string path;
};

FolderOfThisRun& folder() {
    static FolderOfThisRun folderOfThisRun;
    return folderOfThisRun;
}

}  // namespace

std::u16string configurationFolder() {
    const std::lock_guard lock(folder().guard);
    return folder().path;
}

void setConfigurationFolder(const std::u16string& path) {
    {
        const std::lock_guard lock(folder().guard);
        folder().path = path;
    }
    forgetUnkeptDocuments();
}

}  // namespace korvex::runtime::configuration
