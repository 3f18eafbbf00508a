// What commands tell the environment about folders: this one has changed, and the path wants reading again.
#pragma once

#include <functional>
#include <string>

namespace korvex::runtime::dispatcher {

struct FolderEvent {
    enum class Kind { folderOutOfDate, pathRefresh };

    Kind kind;
    /// Native path or location text, as the command gave it; empty for a refresh of the path.
    std::u16string folder;

    bool operator==(const FolderEvent&) const = default;
};

/// The contents of a folder are not what they were.
void markFolderOutOfDate(const std::u16string& folder);

/// The next look-up is to read the search path again.
void requestPathRefresh();

using FolderEventReceiver = std::function<void(const FolderEvent&)>;

/// Hands every later event to `receiver`, on the thread on which it comes up; an empty one drops them. Gives
/// back the receiver before. Not to be called by a receiver, nor while a command runs on another thread.
FolderEventReceiver setFolderEventReceiver(FolderEventReceiver receiver);

}  // namespace korvex::runtime::dispatcher
