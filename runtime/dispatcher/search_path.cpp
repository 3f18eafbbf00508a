// The search path in memory, and its changes. Belongs to the interpreter's thread.
#include "runtime/dispatcher/search_path.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "platform/kx.h"
#include "platform/path_management.h"
#include "runtime/dispatcher/environment_events.h"
#include "runtime/dispatcher/path_locations.h"
#include "runtime/dispatcher/search_path_file.h"
#include "runtime/messages/environment_messages.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::dispatcher {

namespace path_management = Velquist::PathManagement;
namespace vfs = foundation::storage::vfs;
using foundation::core::except::Notification;
using Kind = EnvironmentEvent::Kind;

namespace {

using Change = std::function<void(PathFolders&)>;

/// The path as this run knows it, and its file.
class SearchPath {
public:
    const PathFolders& folders() {
        if (file_.path() != filePath_) forget();
        if (file_.isOutOfDate()) read();
        return folders_;
    }

    /// Changes what stands in the file now, so that what another process has written is not lost. A change
    /// that cannot be written holds for this run, and is written with the next one that can.
    Notification change(Change change) {
        folders();
        Notification notification;
        unwritten_.push_back(std::move(change));
        try {
            write();
        } catch (const configuration::ConfigurationError& error) {
            unwritten_.back()(folders_);
            notification.append(KORVEX::host::searchPathNotWritten(text::fromBytes(error.what())));
        }
        return notification;
    }

private:
    void forget() {
        filePath_ = file_.path();
        folders_.clear();
        unwritten_.clear();
    }

    void read() {
        try {
            folders_ = withUnwritten(file_.read());
            failureTold_.clear();
        } catch (const configuration::ConfigurationError& error) {
            // With the next question it is tried again, but the user need not hear it as often.
            if (std::exchange(failureTold_, error.what()) == error.what()) return;
            kxWarningMsgId(KORVEX::host::searchPathNotRead(text::fromBytes(error.what())));
        }
    }

    void write() {
        PathFolders written;
        file_.update([&](PathFolders& folders) {
            folders = withUnwritten(std::move(folders));
            written = folders;
        });
        folders_ = std::move(written);
        unwritten_.clear();
    }

    PathFolders withUnwritten(PathFolders folders) const {
        for (const Change& change : unwritten_)
            change(folders);
        return folders;
    }

    SearchPathFile file_;
    std::u16string filePath_;
    PathFolders folders_;
    std::vector<Change> unwritten_;
    std::string failureTold_;
};

SearchPath& currentPath() {
    static SearchPath path;
    return path;
}

bool contains(const PathFolders& folders, const vfs::AbsoluteIRI& location) {
    return std::ranges::any_of(
        folders, [&](const vfs::CanonicalAbsoluteIRI& folder) { return areSameLocations(folder, location); });
}

/// Whether an entry may be what the location leads to. Once that is gone, only the folders above it can have
/// other names on the path, so that most locations need not be looked for in every form.
bool mayBeOn(const PathFolders& path, const vfs::AbsoluteIRI& location) {
    if (path.empty()) return false;
    const std::u16string& name = location.getName();
    const auto hasThatName = [&](const vfs::CanonicalAbsoluteIRI& folder) {
        return areSameNames(folder.getName(), name, paths::nativeStyle);
    };
    if (name == u"." || name == u".." || std::ranges::any_of(path, hasThatName)) return true;
    try {
        return vfs::exists(location, Velquist::KorvexStorageSystem::GetStorageSystemReference()) !=
               foundation::storage::provider::AsNeither;
    } catch (const foundation::core::except::IException&) {
        return true;  // nobody can tell
    }
}

void eraseAll(PathFolders& folders, const PathFolders& unwanted) {
    std::erase_if(folders,
                  [&](const vfs::CanonicalAbsoluteIRI& folder) { return contains(unwanted, folder); });
}

/// The canonical location of a folder that is there.
vfs::CanonicalAbsoluteIRI existingFolder(const std::u16string& text) {
    const vfs::Folder folder(path_management::GetIRIFromString(text),
                             Velquist::KorvexStorageSystem::GetStorageSystemReference());
    const vfs::CanonicalAbsoluteIRI canonical = folder.getCanonicalLocation();
    if (!folder.folderExists()) throw vfs::Exception(vfs::invalidLocation, canonical, u"no folder");
    return canonical;
}

std::vector<std::u16string> shownTexts(const PathFolders& folders) {
    std::vector<std::u16string> texts;
    std::ranges::transform(folders, std::back_inserter(texts), shownText);
    return texts;
}

}  // namespace

PathFolders searchPath() { return currentPath().folders(); }

Notification addToSearchPath(const std::vector<std::u16string>& folders) {
    PathFolders added;
    for (const std::u16string& text : folders) {
        const vfs::CanonicalAbsoluteIRI folder = existingFolder(text);
        if (!contains(added, folder)) added.push_back(folder);
    }
    return currentPath().change([added](PathFolders& path) {
        eraseAll(path, added);
        path.insert(path.begin(), added.begin(), added.end());
    });
}

Notification removeFromSearchPath(const std::vector<std::u16string>& folders) {
    std::vector<vfs::AbsoluteIRI> locations;
    std::ranges::transform(folders, std::back_inserter(locations), path_management::GetIRIFromString);
    return removePathEntries(pathEntriesAt(locations, searchPath()));
}

PathFolders pathEntriesAt(const std::vector<vfs::AbsoluteIRI>& locations, const PathFolders& path) {
    PathFolders entries;
    for (const vfs::AbsoluteIRI& location : locations) {
        // The form that the path lists counts first: where that folder was, a link may stand by now.
        const bool isPlain = contains(path, location) || !mayBeOn(path, location);
        entries.push_back(isPlain ? vfs::CanonicalAbsoluteIRI(location) : nearestCanonicalLocation(location));
    }
    return entries;
}

Notification removePathEntries(const PathFolders& entries) {
    PathFolders removed = searchPath();
    std::erase_if(removed,
                  [&](const vfs::CanonicalAbsoluteIRI& folder) { return !contains(entries, folder); });
    if (removed.empty()) {
        Notification notification;
        notification.append(KORVEX::host::notOnSearchPath());
        return notification;
    }
    const Notification unwritten =
        currentPath().change([removed](PathFolders& path) { eraseAll(path, removed); });
    announce({Kind::pathEntriesRemoved, shownTexts(removed)});
    // An empty notification says that they are off the path, and they are.
    for (const resource_core::BaseMsgID& message : unwritten.messages())
        kxWarningMsgId(message);
    return {};
}

Notification replaceSearchPath(const PathFolders& folders) {
    const Notification notification = currentPath().change([folders](PathFolders& path) { path = folders; });
    announce({Kind::pathEntriesRestored, {}});
    return notification;
}

}  // namespace korvex::runtime::dispatcher
