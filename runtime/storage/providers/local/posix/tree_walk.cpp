// A walk through a tree of folders, with as many threads as there are processors.
#include "runtime/storage/providers/local/posix/tree_walk.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace korvex::runtime::storage::posix {

namespace {

constexpr std::size_t mostOpenFolders = 128;
/// A folder with fewer entries than this is one piece; of a larger one, each so many entries are one.
constexpr std::size_t entriesInPiece = 512;
/// Entries are handed to others only while fewer pieces wait than this, so that memory stays bounded.
constexpr std::size_t mostWaitingEntryPieces = 16;

unsigned workersFor(unsigned asked) {
    return asked != 0 ? asked : std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace

TreeWalk::TreeWalk(TreeVisitor& visitor, unsigned workers)
    : visitor_(visitor), mostWorkers_(workersFor(workers)), tree_(mostOpenFolders) {}

TreeWalk::~TreeWalk() {
    for (std::thread& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
}

void TreeWalk::run(std::shared_ptr<TreeFolder> top) {
    put({std::move(top), {}});
    work();
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
    pieces_.clear();
    if (failure_) std::rethrow_exception(failure_);
}

void TreeWalk::work() {
    Piece piece;
    while (take(piece)) {
        try {
            process(piece);
            finish(std::move(piece.folder));
        } catch (...) {
            stop(std::current_exception());
        }
        piece = {};
        const std::lock_guard lock(mutex_);
        if (--underWay_ == 0) changed_.notify_all();
    }
}

bool TreeWalk::take(Piece& piece) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return failure_ || !pieces_.empty() || underWay_ == 0; });
    if (failure_ || pieces_.empty()) return false;
    piece = std::move(pieces_.back());
    pieces_.pop_back();
    ++underWay_;
    return true;
}

void TreeWalk::put(Piece piece) {
    const std::lock_guard lock(mutex_);
    pieces_.push_back(std::move(piece));
    // The first piece is for the thread that began the walk: a small tree needs no other.
    const bool hasWorkForAnother = underWay_ > 0 && pieces_.size() > 1 && !failure_;
    changed_.notify_one();
    if (!hasWorkForAnother || threads_.size() + 1 >= mostWorkers_) return;
    try {
        threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // No further thread is to be had: those that there are do the work.
    }
}

void TreeWalk::process(Piece& piece) {
    if (piece.entries.empty()) {
        readFolder(piece.folder);
        return;
    }
    FolderTree::Handle handles[2];
    openHandles(*piece.folder, handles);
    visitEntries(*piece.folder, handles, piece.entries);
}

void TreeWalk::openHandles(TreeFolder& folder, FolderTree::Handle (&handles)[2]) {
    for (const Side side : {sourceSide, destinationSide}) {
        if (side == destinationSide && !visitor_.hasDestination()) continue;
        int systemError = 0;
        handles[side] = tree_.handle(folder, side, systemError);
        if (!handles[side]) throw WalkFailure{systemError, side, folder.relativePath()};
    }
}

void TreeWalk::readFolder(const std::shared_ptr<TreeFolder>& folder) {
    if (!folder->wasEntered) folder->wasEntered = visitor_.enter(*folder);
    if (!folder->wasEntered) return;
    FolderTree::Handle handles[2];
    openHandles(*folder, handles);
    FolderEntries entries(handles[sourceSide]->get());
    FolderEntry entry{};
    int systemError = 0;
    std::vector<WalkedEntry> found;
    while (!isStopped_.load(std::memory_order_relaxed) && entries.next(entry, systemError)) {
        if (entry.kind == EntryKind::folder) {
            folder->pending.fetch_add(1, std::memory_order_relaxed);
            put({std::make_shared<TreeFolder>(tree_, folder, entry.name), {}});
            continue;
        }
        found.push_back({entry.name, entry.kind});
        if (found.size() < entriesInPiece) continue;
        if (visitor_.splitsFolders() && mayHandOut()) {
            folder->pending.fetch_add(1, std::memory_order_relaxed);
            put({folder, std::move(found)});
        } else {
            visitEntries(*folder, handles, found);
        }
        found.clear();
    }
    // A folder that somebody has removed meanwhile has no entries any more.
    if (systemError != 0 && systemError != ENOENT) {
        throw WalkFailure{systemError, sourceSide, folder->relativePath()};
    }
    visitEntries(*folder, handles, found);
}

bool TreeWalk::mayHandOut() {
    if (mostWorkers_ == 1) return false;
    const std::lock_guard lock(mutex_);
    return pieces_.size() < mostWaitingEntryPieces;
}

void TreeWalk::visitEntries(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
                            const std::vector<WalkedEntry>& entries) {
    for (const WalkedEntry& entry : entries) {
        if (isStopped_.load(std::memory_order_relaxed)) return;
        visitor_.visit(folder, handles, entry);
    }
}

/// Whoever finishes the last piece of a folder leaves it, and perhaps the one above, and so on.
void TreeWalk::finish(std::shared_ptr<TreeFolder> folder) {
    while (folder && folder->pending.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        if (isStopped_.load()) return;
        if (folder->wasEntered && !visitor_.leave(*folder)) {
            folder->pending.store(1, std::memory_order_relaxed);
            put({std::move(folder), {}});
            return;
        }
        tree_.forget(*folder);
        folder = folder->parent();
    }
}

void TreeWalk::stop(std::exception_ptr failure) noexcept {
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::move(failure);
    isStopped_.store(true);
    changed_.notify_all();
}

}  // namespace korvex::runtime::storage::posix
