// Listing of trees, with size and time of every entry.
#include "runtime/storage/providers/local/tree_listing.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <mutex>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/local_times.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/tree_failures.h"
#include "runtime/storage/transfer_progress.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

namespace {

ListedTreeEntry describe(int folder, const WalkedEntry& entry) {
    ListedTreeEntry listed;
    listed.name = text::fromBytes(entry.name);
    listed.isLink = entry.kind == EntryKind::link;
    struct ::stat status {};
    if (::fstatat(folder, entry.name.c_str(), &status, 0) != 0) return listed;
    listed.isFolder = S_ISDIR(status.st_mode);
    listed.size = listed.isFolder ? 0 : static_cast<std::uint64_t>(status.st_size);
    listed.modified = nanosecondsOf(status.st_mtim);
    return listed;
}

/// The entries found so far. Several threads add to those of one folder.
struct FoundEntries : FolderNotes {
    std::mutex mutex;
    std::vector<ListedTreeEntry> entries;
};

void add(TreeFolder& folder, ListedTreeEntry entry) {
    auto& found = static_cast<FoundEntries&>(*folder.notes);
    const std::lock_guard lock(found.mutex);
    found.entries.push_back(std::move(entry));
}

class TreeListing : public TreeVisitor {
public:
    TreeListing(const vfs::AbsoluteIRI& location, const TreeListingReceiver& receive)
        : location_(location), receive_(receive) {}

    void walkFrom(FileDescriptor folder) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        runWalk(walk, makeTop(walk, std::move(folder), location_), location_, location_, u"listing");
    }

    bool hasDestination() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (interpreter::isInterruptPending())
            stopIfInterrupted(locationBelow(location_, folder.relativePath()));
        folder.notes = std::make_unique<FoundEntries>();
        if (!folder.parent()) return true;
        const int systemError = tree_->open(folder, sourceSide);
        if (systemError == 0) {
            addFolder(folder);
            return true;
        }
        if (systemError == ENOENT) return false;
        raiseSystemError(systemError, locationBelow(location_, folder.relativePath()), u"listing");
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        add(folder, describe(handles[sourceSide]->get(), entry));
    }

    bool leave(TreeFolder& folder) override {
        const std::u16string path = text::fromBytes(folder.relativePath());
        const std::lock_guard lock(receiving_);
        receive_(path, std::move(static_cast<FoundEntries&>(*folder.notes).entries));
        return true;
    }

private:
    /// The folder as an entry of the one above it.
    static void addFolder(TreeFolder& folder) {
        ListedTreeEntry listed;
        listed.name = text::fromBytes(folder.name());
        listed.isFolder = true;
        listed.size = 0;
        listed.modified = nanosecondsOf(folder.status.st_mtim);
        add(*folder.parent(), std::move(listed));
    }

    const vfs::AbsoluteIRI location_;
    const TreeListingReceiver& receive_;
    std::mutex receiving_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

}  // namespace korvex::runtime::storage::posix

namespace korvex::runtime::storage {

void listLocalTree(const foundation::storage::vfs::AbsoluteIRI& folder, const TreeListingReceiver& receive) {
    int systemError = 0;
    const posix::FileDescriptor found = posix::openFolderByPath(posix::nativePathOf(folder), systemError);
    if (!found) posix::raiseSystemError(systemError, folder, u"listing");
    posix::FileDescriptor opened(::openat(found.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) posix::raiseSystemError(errno, folder, u"listing");
    posix::TreeListing(folder, receive).walkFrom(std::move(opened));
}

}  // namespace korvex::runtime::storage
