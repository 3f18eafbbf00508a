// What the environment is told while commands run, and what its services do about it.
#include "runtime/dispatcher/environment_events.h"

#include <utility>

#include "platform/foundation_filesystem.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/folder_views.h"
#include "runtime/dispatcher/path_locations.h"

namespace korvex::runtime::dispatcher {

namespace vfs = foundation::storage::vfs;

namespace {

EventWatcher& currentWatcher() {
    static EventWatcher watcher;
    return watcher;
}

}  // namespace

void announce(EnvironmentEvent event) {
    if (currentWatcher()) currentWatcher()(event);
}

void markFolderOutOfDate(const std::u16string& folder) {
    std::u16string shown = folder;
    try {
        const vfs::AbsoluteIRI location = Velquist::PathManagement::GetIRIFromString(folder);
        forgetFolderView(location);
        if (vfs::hasIRIPrefix(folder)) shown = shownText(location);
    } catch (const vfs::InvalidIRIException&) {
        // What names no place has no view.
    } catch (const fl::filesystem::PathNotFound&) {
        // A relative path without a current folder.
    }
    announce({EnvironmentEvent::Kind::folderOutOfDate, {std::move(shown)}});
}

void requestPathRefresh() {
    forgetFolderViews();
    announce({EnvironmentEvent::Kind::pathRefreshRequested, {}});
}

EventWatcher watchEvents(EventWatcher watcher) { return std::exchange(currentWatcher(), std::move(watcher)); }

}  // namespace korvex::runtime::dispatcher
