// The removal of a folder, item by item.
#include "runtime/storage/fault_injection/folder_removal.h"

#include <utility>
#include <vector>

#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

struct OpenFolder {
    AbsoluteIRI location;
    std::vector<ListedEntry> entries;
    std::size_t next = 0;
};

}  // namespace

void removeFolderByItems(Provider& provider, const AbsoluteIRI& folder) {
    // The provider would refuse such a name in the end, but by then the folder it leads to would be empty.
    if (folder.getName() == u"." || folder.getName() == u"..")
        throw vfs::Exception(vfs::invalidLocation, folder, u"removing");
    ProgressCounter progress;
    std::vector<OpenFolder> open{{folder, provider.list(folder, {})}};
    while (!open.empty()) {
        OpenFolder& present = open.back();
        stopIfInterrupted(present.location);
        if (present.next == present.entries.size()) {
            provider.removeFolder(present.location, vfs::RemoveEmptyFolder);
            progress.finished(1, 0, [&] { return present.location; });
            open.pop_back();
            continue;
        }
        const ListedEntry& entry = present.entries[present.next++];
        progress.found(1, 0);
        AbsoluteIRI location(present.location, entry.name);
        const bool isRealFolder =
            entry.isFolder && provider.extendedExistence(location) == provider::ExtendedFolder;
        if (isRealFolder) {
            std::vector<ListedEntry> entries = provider.list(location, {});
            open.push_back({std::move(location), std::move(entries)});
        } else {
            provider.removeFile(location);
            progress.finished(1, 0, [&] { return location; });
        }
    }
}

}  // namespace korvex::runtime::storage
