// The kept views. They belong to the interpreter's thread.
#include "runtime/dispatcher/folder_views.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <string_view>
#include <utility>

#include "platform/path_management.h"
#include "runtime/dispatcher/function_cache.h"
#include "runtime/dispatcher/path_entry_type.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/storage/location.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

struct KeptView {
    vfs::AbsoluteIRI folder;
    std::shared_ptr<const FolderView> view;
};
using KeptViews = std::map<std::u16string, KeptView>;

/// By the folder's location text.
KeptViews& keptViews() {
    static KeptViews views;
    return views;
}

bool isSpecial(const std::u16string& name) {
    using namespace Velquist::PathManagement;
    return GetPathEntryTypeFromBaseName(name) != OrdinaryFolder;
}

/// Whether the path leads to or through a special subfolder, of whatever folder.
bool hasSpecialComponent(const vfs::AbsoluteIRI& location) {
    const std::u16string_view path = location.parts().path;
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t end = std::min(path.find(u'/', begin), path.size());
        const auto type = pathEntryType(path.substr(begin, end - begin), paths::nativeStyle);
        if (type != Velquist::PathManagement::OrdinaryFolder) return true;
        begin = end + 1;
    }
    return false;
}

FolderView readView(const vfs::Folder& folder) {
    FolderView view;
    for (const vfs::ListEntry& entry : folder.listAll(u"")) {
        const std::u16string& name = entry.getLocation().getName();
        const bool isFolder = boost::get<vfs::Folder>(&entry.getFileOrFolder()) != nullptr;
        if (isFolder && isSpecial(name)) view.specialSubfolders.push_back(name);
        if (!isFolder && isSourceFileName(name)) view.sourceFiles.push_back(name);
    }
    return view;
}

}  // namespace

std::shared_ptr<const FolderView> folderView(const vfs::CanonicalAbsoluteIRI& folder) {
    const auto kept = keptViews().find(folder.toString());
    if (kept != keptViews().end()) return kept->second.view;
    try {
        auto view = std::make_shared<const FolderView>(
            readView(vfs::Folder(folder, Velquist::KorvexStorageSystem::GetStorageSystemReference())));
        keptViews().emplace(folder.toString(), KeptView{folder, view});
        return view;
    } catch (const vfs::Exception&) {
        return std::make_shared<const FolderView>();
    } catch (const vfs::UnsupportedIRISchemeException&) {
        return std::make_shared<const FolderView>();
    }
}

void forgetFolderView(const vfs::AbsoluteIRI& folder) {
    // Finding the canonical form asks the disk, which is not worth it while nothing is kept.
    if (keptViews().empty()) return;
    const vfs::CanonicalAbsoluteIRI canonical = nearestCanonicalLocation(folder);
    // Its own name counts too: where the folder was, a link may stand by now.
    std::erase_if(keptViews(), [&](const KeptViews::value_type& kept) {
        const vfs::AbsoluteIRI& viewed = kept.second.folder;
        return areSameLocations(viewed, canonical) || areSameLocations(viewed, folder);
    });
}

void forgetFolderViewsAbove(const vfs::AbsoluteIRI& location) {
    // Where the canonical form lies is a question to the disk, and views know special subfolders only.
    if (keptViews().empty() || !hasSpecialComponent(location)) return;
    vfs::CanonicalAbsoluteIRI above = nearestCanonicalLocation(location);
    while (above.hasParent()) {
        above = above.getParent();
        std::erase_if(keptViews(), [&](const KeptViews::value_type& kept) {
            return areSameLocations(kept.second.folder, above);
        });
    }
}

void forgetFolderViews() { keptViews().clear(); }

}  // namespace korvex::runtime::dispatcher
