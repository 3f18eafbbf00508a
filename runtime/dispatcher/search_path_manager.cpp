// The module's side of the search path: it hands everything on to search_path.h and folder_views.h.
#include "runtime/dispatcher/search_path_manager.h"

#include "runtime/dispatcher/environment_events.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/dispatcher/search_path.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;
using foundation::core::except::Notification;
using Kind = EnvironmentEvent::Kind;

void MainSearchPathManager::refresh(bool isForced) {
    forgetFolderViews();
    if (isForced) {
        for (const vfs::CanonicalAbsoluteIRI& folder : searchPath())
            folderView(folder);
    }
    announce({Kind::searchPathRefreshed, {}});
}

void MainSearchPathManager::removeEntries(
    Velquist::PathManagement::LocationRange<vfs::CanonicalAbsoluteIRI> entries, Notification& notification) {
    notification = removePathEntries(PathFolders(entries.begin(), entries.end()));
}

std::vector<vfs::CanonicalAbsoluteIRI> MainSearchPathManager::getPathEntries() const { return searchPath(); }

void MainSearchPathManager::restorePathEntries(const std::vector<vfs::CanonicalAbsoluteIRI>& entries,
                                               Notification& notification) {
    notification = replaceSearchPath(entries);
}

void PerKVMEventManager::notifySpecialSubfolderChange(const vfs::AbsoluteIRI& location) {
    forgetFolderViewsAbove(location);
    announce({Kind::upstreamEntriesNotified, {shownText(location)}});
}

}  // namespace korvex::runtime::dispatcher

namespace Velquist::PathManagement {

namespace environment = korvex::runtime::dispatcher;
namespace vfs = foundation::storage::vfs;

foundation::core::except::Notification RemoveIRIsFromKorvexPath(LocationRange<vfs::AbsoluteIRI> locations,
                                                                IMainSearchPathManager& manager) {
    const std::vector<vfs::AbsoluteIRI> folders(locations.begin(), locations.end());
    foundation::core::except::Notification notification;
    manager.removeEntries(environment::pathEntriesAt(folders, manager.getPathEntries()), notification);
    return notification;
}

void NotifyUpstreamPathEntriesOfPossibleSpecialSubfolderChanges(const vfs::AbsoluteIRI& location,
                                                                IPerKVMEventManager& eventManager) {
    eventManager.notifySpecialSubfolderChange(location);
}

}  // namespace Velquist::PathManagement
