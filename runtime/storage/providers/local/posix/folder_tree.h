// Folders of a tree that is walked, held by open handles and never by path.
//
// Each folder is opened relative to the one above it, without following a link, so a link that somebody swaps
// in leads nowhere. Only so many handles stay open at a time, whatever the depth: the ones not used for
// longest are closed, and opened again when needed by going down from the nearest open folder above. A folder
// that is not the same one then (device and inode) counts as gone: ENOENT.
//
// A walk may have two sides, the tree that is read and the one that is written; both have the same shape.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "runtime/storage/providers/local/posix/file_descriptor.h"

namespace korvex::runtime::storage::posix {

enum Side : unsigned { sourceSide = 0, destinationSide = 1 };

class FolderTree;

/// What a visitor keeps with a folder.
struct FolderNotes {
    virtual ~FolderNotes() = default;
};

/// One folder of the tree. Kept alive by those below it.
class TreeFolder {
public:
    TreeFolder(FolderTree& tree, std::shared_ptr<TreeFolder> parent, std::string name);
    ~TreeFolder();
    TreeFolder(const TreeFolder&) = delete;
    TreeFolder& operator=(const TreeFolder&) = delete;

    const std::shared_ptr<TreeFolder>& parent() const noexcept { return parent_; }
    /// Name below the parent; the whole path for the top folder.
    const std::string& name() const noexcept { return name_; }
    /// The path from the top folder down, with "/" between names; empty for the top folder.
    std::string relativePath() const;

    /// What is still to be done in and below this folder; the walk leaves the folder when it drops to 0.
    std::atomic<std::size_t> pending{1};
    /// The folder on the source side, as it was when it was opened first.
    struct ::stat status {};
    /// For the walk and its visitor.
    bool wasCreated = false;
    bool handsAccessListsOn = true;
    bool wasEntered = false;
    bool wasLeft = false;
    int readings = 0;
    std::unique_ptr<FolderNotes> notes;

private:
    friend class FolderTree;

    struct OpenSide {
        std::shared_ptr<FileDescriptor> handle;
        dev_t device = 0;
        ino_t inode = 0;
        bool wasOpened = false;
    };

    /// On every side on which it was opened before.
    bool isOpen() const noexcept {
        return std::none_of(sides_.begin(), sides_.end(),
                            [](const OpenSide& side) { return side.wasOpened && !side.handle; }) &&
               (sides_[sourceSide].wasOpened || sides_[destinationSide].wasOpened);
    }

    FolderTree& tree_;
    std::shared_ptr<TreeFolder> parent_;
    std::string name_;
    std::array<OpenSide, 2> sides_;
    std::list<TreeFolder*>::iterator place_;
    bool isListed_ = false;
};

/// The open handles of a tree; outlives its folders. Safe for several threads.
class FolderTree {
public:
    /// Keeps at most about `mostOpen` folders open.
    explicit FolderTree(std::size_t mostOpen) : mostOpen_(mostOpen) {}
    FolderTree(const FolderTree&) = delete;
    FolderTree& operator=(const FolderTree&) = delete;

    using Handle = std::shared_ptr<FileDescriptor>;

    /// Gives a folder its handle of one side, freshly opened; 0 or the errno.
    int adopt(TreeFolder& folder, Side side, FileDescriptor handle);
    /// Opens a folder below its parent, without following a link; 0 or the errno.
    int open(TreeFolder& folder, Side side);
    /// The folder's handle, opened again if it was closed meanwhile. Null and the errno when it cannot be.
    Handle handle(TreeFolder& folder, Side side, int& systemError);
    /// The folder is done: its handles close.
    void forget(TreeFolder& folder) noexcept;

    /// How many folders there were at most at a time, open or not.
    std::size_t mostFolders() const noexcept { return mostFolders_.load(); }

private:
    friend class TreeFolder;
    int reopen(TreeFolder& folder);
    static int openAgain(int above, const std::string& name, TreeFolder::OpenSide& place);
    void markUsed(TreeFolder& folder);
    void closeOldest(const TreeFolder& spared);

    const std::size_t mostOpen_;
    std::mutex mutex_;
    /// Folders with an open handle, the one used last in front.
    std::list<TreeFolder*> open_;
    std::atomic<std::size_t> folders_{0};
    std::atomic<std::size_t> mostFolders_{0};
};

}  // namespace korvex::runtime::storage::posix
