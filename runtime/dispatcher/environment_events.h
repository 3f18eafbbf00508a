// What the environment is told while commands run: folders that changed, the search path, cached functions.
// The services act on each event; a host can watch them.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace korvex::runtime::dispatcher {

struct EnvironmentEvent {
    enum class Kind {
        folderOutOfDate,          ///< `texts`: the folder
        pathRefreshRequested,     ///< the next look-up reads the path again
        functionsCleared,         ///< `texts`: the source file
        pathEntriesRemoved,       ///< `texts`: the folders that were taken off the path
        pathEntriesRestored,      ///< the path was written back
        searchPathRefreshed,      ///< the path's manager was asked to refresh
        upstreamEntriesNotified,  ///< `texts`: the location below the entries
        functionCalled,           ///< `texts`: the name of an interpreted function
    };

    Kind kind;
    /// Native paths, and decoded texts of locations that are not local.
    std::vector<std::u16string> texts;

    bool operator==(const EnvironmentEvent&) const = default;
};

/// The contents of a folder are not what they were: its cached view goes. Native path or location text.
void markFolderOutOfDate(const std::u16string& folder);

/// The next look-up is to read the search path again.
void requestPathRefresh();

/// Hands an event to the watcher.
void announce(EnvironmentEvent event);

using EventWatcher = std::function<void(const EnvironmentEvent&)>;

/// Hands every later event to `watcher`, on the thread on which it comes up and after the services have acted
/// on it; an empty one drops them. Gives back the watcher before. Not to be called by a watcher, nor while a
/// command runs on another thread.
EventWatcher watchEvents(EventWatcher watcher);

}  // namespace korvex::runtime::dispatcher
