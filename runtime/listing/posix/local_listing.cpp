// Listing of local folders on POSIX systems.
//
// One walk goes through the folders that are reached without following a link. Links to folders that the
// pattern names are walked afterwards, each by a walk of its own; they are few, and no pattern follows more
// of them in a row than it has names.
#include "runtime/listing/local_listing.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <mutex>
#include <utility>
#include <vector>

#include "runtime/listing/entry_time.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/path_lookup.h"
#include "runtime/storage/providers/local/posix/place.h"
#include "runtime/storage/providers/local/posix/tree_failures.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::listing {

namespace {

namespace vfs = foundation::storage::vfs;
using storage::posix::EntryKind;
using storage::posix::FileDescriptor;
using storage::posix::FolderNotes;
using storage::posix::FolderTree;
using storage::posix::raiseSystemError;
using storage::posix::TreeFolder;
using storage::posix::TreeVisitor;
using storage::posix::TreeWalk;
using storage::posix::WalkedEntry;

constexpr const char16_t* listing = u"listing";

void fillIn(FileNameWithStatLight& entry, const struct ::stat& status) {
    entry.isDirectory = S_ISDIR(status.st_mode);
    entry.size = entry.isDirectory ? 0 : static_cast<std::uint64_t>(status.st_size);
    entry.sizeKnown = true;
    entry.modified = entryTime(status.st_mtim.tv_sec, status.st_mtim.tv_nsec);
}

/// It has gone, is no folder any more, or may not be read. Whatever else keeps a folder closed would leave a
/// listing with gaps that nobody knows of.
bool mayBePassedOver(int systemError) noexcept {
    constexpr int errors[] = {EACCES, EPERM, ENOENT, ENOTDIR, ELOOP};
    return std::find(std::begin(errors), std::end(errors), systemError) != std::end(errors);
}

/// A folder of the walk and what is found in it. Several threads add to one folder.
class VisitedFolder : public FolderNotes {
public:
    /// For a folder that is open.
    explicit VisitedFolder(ListedFolder& folder) : listed(folder) { folder.wasListed = true; }

    void add(FileNameWithStatLight entry) {
        const std::lock_guard lock(mutex_);
        listed.entries.push_back(std::move(entry));
    }
    ListedFolder& addFolder(std::u16string name, GlobPattern::Positions positions) {
        auto below = std::make_unique<ListedFolder>(std::move(name), std::move(positions));
        const std::lock_guard lock(mutex_);
        listed.folders.push_back(std::move(below));
        return *listed.folders.back();
    }

    /// Its name and positions stand fast during the walk.
    ListedFolder& listed;

private:
    std::mutex mutex_;
};

VisitedFolder& visited(const TreeFolder& folder) { return static_cast<VisitedFolder&>(*folder.notes); }

/// A link to a folder that the pattern names, to be walked on its own.
struct FollowedLink {
    ListedFolder* folder;
    vfs::AbsoluteIRI location;
};

class ListingVisitor : public TreeVisitor {
public:
    ListingVisitor(const vfs::AbsoluteIRI& location, const GlobPattern& pattern, Detail detail,
                   ListedFolder& top, std::vector<FollowedLink>& links)
        : location_(location), pattern_(pattern), detail_(detail), top_(top), links_(links) {}

    void walkFrom(FileDescriptor folder) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        runWalk(walk, makeTop(walk, std::move(folder), location_), location_, location_, listing);
    }

    bool hasDestination() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (!folder.parent()) {
            folder.notes = std::make_unique<VisitedFolder>(top_);
            return true;
        }
        VisitedFolder& parent = visited(*folder.parent());
        std::u16string name = text::fromBytes(folder.name());
        GlobPattern::Match match = pattern_.match(parent.listed.positions, name, EntryShape::folder);
        const bool isOpen = !match.next.empty() && open(folder);
        if (match.isListed) listFolder(folder, parent, name, isOpen);
        if (!isOpen) return false;
        ListedFolder& listed = parent.addFolder(std::move(name), std::move(match.next));
        folder.notes = std::make_unique<VisitedFolder>(listed);
        return true;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        const int handle = handles[storage::posix::sourceSide]->get();
        std::u16string name = text::fromBytes(entry.name);
        if (entry.kind == EntryKind::link) {
            visitLink(folder, handle, entry.name, std::move(name));
        } else if (pattern_.listsFile(visited(folder).listed.positions, name)) {
            list(visited(folder), handle, entry, std::move(name));
        }
    }

    bool leave(TreeFolder& folder) override {
        visited(folder).listed.sort();
        return true;
    }

private:
    /// False for a folder that is to be passed over.
    bool open(TreeFolder& folder) {
        const int systemError = tree_->open(folder, storage::posix::sourceSide);
        if (systemError == 0 || mayBePassedOver(systemError)) return systemError == 0;
        raiseSystemError(systemError, storage::posix::locationBelow(location_, folder.relativePath()),
                         listing);
    }

    void listFolder(TreeFolder& folder, VisitedFolder& parent, const std::u16string& name, bool isOpen) {
        FileNameWithStatLight entry;
        entry.name = name;
        entry.isDirectory = true;
        if (detail_ == Detail::sizeAndTime && isOpen) {
            fillIn(entry, folder.status);
        } else if (detail_ == Detail::sizeAndTime) {
            int systemError = 0;
            const FolderTree::Handle above =
                tree_->handle(*folder.parent(), storage::posix::sourceSide, systemError);
            if (!above || !describe(above->get(), folder.name().c_str(), entry)) return;
        }
        parent.add(std::move(entry));
    }

    void list(VisitedFolder& folder, int handle, const WalkedEntry& found, std::u16string name) {
        FileNameWithStatLight entry;
        entry.name = std::move(name);
        if (detail_ == Detail::sizeAndTime && !describe(handle, found.name.c_str(), entry)) return;
        folder.add(std::move(entry));
    }

    /// False when the entry has gone. What may not be looked at stays without size and time.
    static bool describe(int folder, const char* name, FileNameWithStatLight& entry) {
        struct ::stat status {};
        if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
            fillIn(entry, status);
            return true;
        }
        return errno != ENOENT;
    }

    void visitLink(TreeFolder& folder, int handle, const std::string& bytes, std::u16string name) {
        VisitedFolder& above = visited(folder);
        const GlobPattern::Positions& positions = above.listed.positions;
        GlobPattern::Match match = pattern_.match(positions, name, EntryShape::linkToFolder);
        FileNameWithStatLight entry;
        const bool matters = match.isListed || pattern_.listsFile(positions, name) || !match.next.empty();
        const bool isAsked = detail_ != Detail::none || !match.next.empty();
        struct ::stat status {};
        if (matters && isAsked && ::fstatat(handle, bytes.c_str(), &status, 0) == 0) {
            entry.isDirectory = S_ISDIR(status.st_mode);
            if (detail_ == Detail::sizeAndTime) fillIn(entry, status);
        }

        if (entry.isDirectory && !match.next.empty()) {
            ListedFolder& listed = above.addFolder(name, std::move(match.next));
            const std::lock_guard lock(linksMutex_);
            links_.push_back({&listed, locationIn(location_, folder, bytes)});
        }
        const bool isListed = entry.isDirectory ? match.isListed : pattern_.listsFile(positions, name);
        if (!isListed) return;
        entry.name = std::move(name);
        above.add(std::move(entry));
    }

    const vfs::AbsoluteIRI location_;
    const GlobPattern& pattern_;
    const Detail detail_;
    ListedFolder& top_;
    std::vector<FollowedLink>& links_;
    std::mutex linksMutex_;
    FolderTree* tree_ = nullptr;
};

/// Opens a folder for reading, links followed; the errno when it cannot.
FileDescriptor openToRead(const vfs::AbsoluteIRI& location, int& systemError) {
    std::string path;
    systemError = ENOENT;
    if (!storage::posix::nativePathOf(location, path)) return {};
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    FileDescriptor opened(::open(path.c_str(), flags));
    systemError = opened ? 0 : errno;
    if (systemError != ENAMETOOLONG) return opened;
    // Longer than the system takes in one call, or not to be had at all.
    const FileDescriptor found = storage::posix::openFolderByPath(path, systemError);
    if (!found) return {};
    opened = FileDescriptor(::openat(found.get(), ".", flags));
    systemError = opened ? 0 : errno;
    return opened;
}

class LocalListing : public ListingStorage {
public:
    FileNameWithStatLight describe(const AbsoluteIRI& location, Detail detail) override {
        FileNameWithStatLight entry;
        entry.name = location.getName();
        struct ::stat status {};
        const bool isKnown = detail == Detail::sizeAndTime &&
                             storage::posix::statusOf(storage::posix::nativePathOf(location),
                                                      storage::posix::Links::follow, status) == 0;
        if (isKnown) fillIn(entry, status);
        return entry;
    }

    bool walk(const AbsoluteIRI& folder, const GlobPattern& pattern, Detail detail,
              ListedFolder& top) override {
        int systemError = 0;
        FileDescriptor opened = openToRead(folder, systemError);
        const bool isMissing = systemError == ENOENT || systemError == ENOTDIR ||
                               systemError == ENAMETOOLONG || systemError == ELOOP;
        if (isMissing) return false;
        if (!opened) raiseSystemError(systemError, folder, listing);

        std::vector<FollowedLink> links;
        ListingVisitor(folder, pattern, detail, top, links).walkFrom(std::move(opened));
        while (!links.empty()) {
            const FollowedLink link = std::move(links.back());
            links.pop_back();
            FileDescriptor target = openToRead(link.location, systemError);
            if (!target && !mayBePassedOver(systemError)) {
                raiseSystemError(systemError, link.location, listing);
            }
            if (target) {
                ListingVisitor(link.location, pattern, detail, *link.folder, links)
                    .walkFrom(std::move(target));
            }
        }
        return true;
    }
};

}  // namespace

std::unique_ptr<ListingStorage> makeLocalListing() { return std::make_unique<LocalListing>(); }

}  // namespace korvex::runtime::listing
