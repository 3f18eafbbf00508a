// Finding the source file of a function by its name.
#include <algorithm>

#include "platform/path_management.h"
#include "runtime/dispatcher/current_folder.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/dispatcher/search_path.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

/// A name without its extension means source code before live code.
std::vector<std::u16string> fileNamesOf(const std::u16string& name) {
    if (isSourceFileName(name)) return {name};
    std::vector<std::u16string> names;
    for (const std::u16string_view extension : sourceExtensions)
        names.push_back(std::u16string(name).append(extension));
    return names;
}

const std::u16string* findName(const FolderView& view, const std::u16string& name) {
    const auto found = std::ranges::find_if(view.sourceFiles, [&](const std::u16string& file) {
        return areSameNames(file, name, paths::nativeStyle);
    });
    return found == view.sourceFiles.end() ? nullptr : &*found;
}

bool countsFrom(const vfs::CanonicalAbsoluteIRI& folder, const vfs::AbsoluteIRI& currentFolder) {
    using namespace Velquist::PathManagement;
    return GetPathEntryTypeFromBaseName(folder.getName()) != PrivateFolder ||
           (folder.hasParent() && areSameLocations(folder.getParent(), currentFolder));
}

}  // namespace

std::vector<vfs::AbsoluteIRI> findSourceFile(const std::u16string& name) {
    PathFolders folders = searchPath();
    const std::u16string currentPath = currentFolderPath();
    if (!currentPath.empty()) {
        const vfs::CanonicalAbsoluteIRI current(Velquist::PathManagement::GetIRIFromString(currentPath));
        std::erase_if(folders, [&](const auto& folder) { return !countsFrom(folder, current); });
        folders.insert(folders.begin(), current);
    }
    for (const vfs::CanonicalAbsoluteIRI& folder : folders) {
        const std::shared_ptr<const FolderView> view = folderView(folder);
        for (const std::u16string& fileName : fileNamesOf(name)) {
            if (const std::u16string* found = findName(*view, fileName)) {
                return {vfs::AbsoluteIRI(folder, *found)};
            }
        }
    }
    return {};
}

}  // namespace korvex::runtime::dispatcher
