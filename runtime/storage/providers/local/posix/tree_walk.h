// A walk through a tree of folders, with as many threads as there are processors.
//
// A folder is a piece of work; a very large one is split. The walk goes deep before it goes wide, and of the
// folders that wait it keeps just the names: what it holds grows with the entries of the folders on the way
// down, not with the tree. Folders are entered before what is in them and left after all of it is done. The
// first failure stops the walk: pieces under way are finished, no other is begun, and the folders that were
// begun and not left are abandoned.
//
// Threads and open folders are no more than the process's limit of open files has room for.
#pragma once

#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "runtime/storage/providers/local/posix/folder_entries.h"
#include "runtime/storage/providers/local/posix/folder_tree.h"

namespace korvex::runtime::storage::posix {

/// An entry that is no folder.
struct WalkedEntry {
    std::string name;
    EntryKind kind;
    ino_t inode = 0;
};

/// What is done on the walk. Called from several threads, but for one folder's `enter` and `leave`, which
/// come before and after everything else about it. Whatever these raise stops the walk.
class TreeVisitor {
public:
    virtual ~TreeVisitor() = default;
    /// Opens the folder in the tree; the top folder is open already. False passes the folder over.
    virtual bool enter(TreeFolder& folder) = 0;
    /// An entry that is no folder. `handles` are those of the folder's sides.
    virtual void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
                       const WalkedEntry& entry) = 0;
    /// False has the folder read once more from its start, as a removal must that finds it not empty.
    virtual bool leave(TreeFolder& folder) = 0;
    /// The walk was stopped. Called in the end for every folder that was begun and not left, whether it could
    /// be entered or not; those below before those above, by the thread that began the walk.
    virtual void abandon(TreeFolder&) noexcept {}

    /// Whether the entries of one large folder may be visited by several threads.
    virtual bool splitsFolders() const { return true; }
    /// Whether the walk has a second side, whose handles `visit` needs.
    virtual bool hasDestination() const = 0;
};

class TreeWalk {
public:
    /// At most so many `workers`; 0: as many as processors.
    explicit TreeWalk(TreeVisitor& visitor, unsigned workers = 0);
    ~TreeWalk();
    TreeWalk(const TreeWalk&) = delete;
    TreeWalk& operator=(const TreeWalk&) = delete;

    FolderTree& tree() noexcept { return tree_; }

    /// Walks from a top folder whose sides have been adopted. Raises what the visitor raised first.
    void run(std::shared_ptr<TreeFolder> top);

private:
    /// A folder to be read, or some entries of one that is being read.
    struct Piece {
        std::shared_ptr<TreeFolder> folder;
        std::vector<WalkedEntry> entries;
        /// Folders below it, of which those from `next` on have not been begun.
        std::vector<std::string> below = {};
        std::size_t next = 0;
        /// Of a piece that was taken: the folder below that is begun with it.
        std::string begun = {};
    };

    void work();
    bool take(Piece& piece);
    void put(Piece piece);
    void process(Piece& piece);
    void readFolder(const std::shared_ptr<TreeFolder>& folder);
    void putBelow(const std::shared_ptr<TreeFolder>& folder, std::vector<std::string>& names);
    void visitEntries(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
                      std::vector<WalkedEntry>& entries);
    void finish(std::shared_ptr<TreeFolder> folder);
    void stop(std::exception_ptr failure) noexcept;
    void keep(Piece& piece) noexcept;
    void abandonAll() noexcept;
    bool mayHandOut();
    void openHandles(TreeFolder& folder, FolderTree::Handle (&handles)[2]);

    TreeVisitor& visitor_;
    const unsigned mostWorkers_;
    FolderTree tree_;

    std::mutex mutex_;
    std::condition_variable changed_;
    /// The piece put last is taken first, so that the walk goes deep before it goes wide.
    std::deque<Piece> pieces_;
    std::size_t underWay_ = 0;
    std::vector<std::thread> threads_;
    std::exception_ptr failure_;
    std::atomic<bool> isStopped_{false};
};

/// A system call failed on the walk: the errno, and the path below the top folder at which it happened.
/// Raised by the walk itself.
struct WalkFailure {
    int systemError;
    Side side;
    std::string relativePath;
};

}  // namespace korvex::runtime::storage::posix
