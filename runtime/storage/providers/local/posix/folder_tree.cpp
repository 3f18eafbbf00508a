// Folders of a tree that is walked, held by open handles and never by path.
#include "runtime/storage/providers/local/posix/folder_tree.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace korvex::runtime::storage::posix {

namespace {

FileDescriptor openBelow(int parent, const std::string& name) noexcept {
    return FileDescriptor(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

}  // namespace

TreeFolder::TreeFolder(FolderTree& tree, std::shared_ptr<TreeFolder> parent, std::string name)
    : tree_(tree), parent_(std::move(parent)), name_(std::move(name)) {
    const std::size_t present = ++tree_.folders_;
    std::size_t most = tree_.mostFolders_.load();
    while (most < present && !tree_.mostFolders_.compare_exchange_weak(most, present)) {
    }
}

TreeFolder::~TreeFolder() {
    tree_.forget(*this);
    --tree_.folders_;
    // A chain of folders that only hold each other goes in a loop: its depth has no limit.
    std::shared_ptr<TreeFolder> above = std::move(parent_);
    while (above && above.use_count() == 1) {
        std::shared_ptr<TreeFolder> next = std::move(above->parent_);
        above = std::move(next);
    }
}

std::string TreeFolder::relativePath() const {
    std::vector<const std::string*> names;
    for (const TreeFolder* folder = this; folder->parent_; folder = folder->parent_.get()) {
        names.push_back(&folder->name_);
    }
    std::string path;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        if (!path.empty()) path += '/';
        path += **name;
    }
    return path;
}

int FolderTree::adopt(TreeFolder& folder, Side side, FileDescriptor handle) {
    struct ::stat status {};
    if (!handle) return EBADF;
    if (::fstat(handle.get(), &status) != 0) return errno;
    if (side == sourceSide) folder.status = status;
    const std::lock_guard lock(mutex_);
    folder.sides_[side] = {std::make_shared<FileDescriptor>(std::move(handle)), status.st_dev, status.st_ino,
                           true};
    markUsed(folder);
    return 0;
}

int FolderTree::open(TreeFolder& folder, Side side) {
    int systemError = 0;
    const Handle parent = handle(*folder.parent_, side, systemError);
    if (!parent) return systemError;
    FileDescriptor opened = openBelow(parent->get(), folder.name_);
    return opened ? adopt(folder, side, std::move(opened)) : errno;
}

FolderTree::Handle FolderTree::handle(TreeFolder& folder, Side side, int& systemError) {
    const std::lock_guard lock(mutex_);
    systemError = folder.isOpen() ? 0 : reopen(folder);
    if (systemError != 0) return nullptr;
    markUsed(folder);
    if (!folder.sides_[side].handle) systemError = EBADF;
    return folder.sides_[side].handle;
}

void FolderTree::forget(TreeFolder& folder) noexcept {
    const std::lock_guard lock(mutex_);
    if (std::exchange(folder.isListed_, false)) open_.erase(folder.place_);
    for (TreeFolder::OpenSide& side : folder.sides_) {
        side.handle.reset();
    }
}

/// Goes down from the nearest open folder above, on all sides at once, and keeps what it opens on the way: a
/// walk that comes back up needs those next.
int FolderTree::reopen(TreeFolder& folder) {
    std::vector<TreeFolder*> closed;
    TreeFolder* nearest = &folder;
    for (; !nearest->isOpen(); nearest = nearest->parent_.get()) {
        closed.push_back(nearest);
        if (!nearest->parent_) return EBADF;
    }
    // Folders are closed from the top down, so nothing on the way closes that is needed for the next one.
    std::array<Handle, 2> above = {nearest->sides_[sourceSide].handle,
                                   nearest->sides_[destinationSide].handle};
    for (auto next = closed.rbegin(); next != closed.rend(); ++next) {
        for (const Side side : {sourceSide, destinationSide}) {
            TreeFolder::OpenSide& place = (*next)->sides_[side];
            if (!place.wasOpened) continue;
            if (!place.handle) {
                const int systemError = openAgain(above[side]->get(), (*next)->name_, place);
                if (systemError != 0) return systemError;
            }
            above[side] = place.handle;
        }
        markUsed(**next);
    }
    return 0;
}

int FolderTree::openAgain(int above, const std::string& name, TreeFolder::OpenSide& place) {
    FileDescriptor opened = openBelow(above, name);
    struct ::stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0) return errno;
    const bool isTheSame = status.st_dev == place.device && status.st_ino == place.inode;
    if (!isTheSame) return ENOENT;
    place.handle = std::make_shared<FileDescriptor>(std::move(opened));
    return 0;
}

void FolderTree::markUsed(TreeFolder& folder) {
    if (folder.isListed_) {
        open_.splice(open_.begin(), open_, folder.place_);
        return;
    }
    open_.push_front(&folder);
    folder.place_ = open_.begin();
    folder.isListed_ = true;
    if (open_.size() > mostOpen_) closeOldest(folder);
}

void FolderTree::closeOldest(const TreeFolder& spared) {
    // The top folder has no folder above it to be opened from again, so it stays.
    for (auto oldest = std::prev(open_.end()); oldest != open_.begin(); --oldest) {
        TreeFolder& folder = **oldest;
        if (&folder == &spared || !folder.parent_) continue;
        for (TreeFolder::OpenSide& side : folder.sides_) {
            side.handle.reset();
        }
        folder.isListed_ = false;
        open_.erase(oldest);
        return;
    }
}

}  // namespace korvex::runtime::storage::posix
