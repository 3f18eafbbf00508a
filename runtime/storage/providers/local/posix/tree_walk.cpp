// A walk through a tree of folders, with as many threads as there are processors.
#include "runtime/storage/providers/local/posix/tree_walk.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "runtime/storage/providers/local/posix/open_files.h"

namespace korvex::runtime::storage::posix {

namespace {

constexpr std::size_t mostThreads = 16;
/// A folder with fewer entries than this is one piece; of a larger one, each so many entries are one.
constexpr std::size_t entriesInPiece = 512;
/// Of a folder whose entries one thread visits, so many are put into the order in which they lie on the disk.
constexpr std::size_t entriesInOrder = 131072;
/// As far as their names take no more bytes than this.
constexpr std::size_t mostBytesInOrder = std::size_t{4} << 20;
/// Entries are handed to others only while fewer pieces wait than this, so that memory stays bounded.
constexpr std::size_t mostWaitingEntryPieces = 16;

/// One has up to four files open, and two handles of a folder that may count as closed: all take a quarter.
unsigned workersFor(unsigned asked, std::size_t limit) noexcept {
    const unsigned wanted = asked != 0 ? asked : std::max(1U, std::thread::hardware_concurrency());
    return std::min(wanted, static_cast<unsigned>(std::clamp<std::size_t>(limit / 24, 1, mostThreads)));
}

}  // namespace

TreeWalk::TreeWalk(TreeVisitor& visitor, unsigned workers)
    : visitor_(visitor),
      mostWorkers_(workersFor(workers, limitOfOpenFiles())),
      tree_(openFoldersFor(limitOfOpenFiles())) {}

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
    if (!failure_) return;
    abandonAll();
    pieces_.clear();
    std::rethrow_exception(failure_);
}

void TreeWalk::work() {
    Piece piece;
    while (take(piece)) {
        try {
            process(piece);
            finish(piece.folder);
        } catch (...) {
            stop(std::current_exception());
        }
        if (isStopped_.load()) keep(piece);
        piece = {};
        const std::lock_guard lock(mutex_);
        if (--underWay_ == 0) changed_.notify_all();
    }
}

bool TreeWalk::take(Piece& piece) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return failure_ || !pieces_.empty() || underWay_ == 0; });
    if (failure_ || pieces_.empty()) return false;
    Piece& last = pieces_.back();
    const bool isOneOfSeveral = last.next < last.below.size();
    if (isOneOfSeveral) {
        piece.folder = last.folder;
        piece.begun = std::move(last.below[last.next++]);
    }
    if (!isOneOfSeveral) piece = std::move(last);
    if (!isOneOfSeveral || last.next == last.below.size()) pieces_.pop_back();
    ++underWay_;
    return true;
}

void TreeWalk::put(Piece piece) {
    const std::lock_guard lock(mutex_);
    const bool isSeveral = piece.below.size() > 1;
    pieces_.push_back(std::move(piece));
    // The first piece is for the thread that began the walk: a small tree needs no other.
    const bool hasWorkForAnother = underWay_ > 0 && (isSeveral || pieces_.size() > 1) && !failure_;
    isSeveral ? changed_.notify_all() : changed_.notify_one();
    if (!hasWorkForAnother || threads_.size() + 1 >= mostWorkers_) return;
    try {
        threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // No further thread is to be had: those that there are do the work.
    }
}

void TreeWalk::process(Piece& piece) {
    if (!piece.begun.empty())
        piece.folder = std::make_shared<TreeFolder>(tree_, piece.folder, std::move(piece.begun));
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
    std::vector<std::string> below;
    const bool mayBeSplit = visitor_.splitsFolders();
    const std::size_t mostFound = mayBeSplit ? entriesInPiece : entriesInOrder;
    std::size_t bytes = 0;
    while (!isStopped_.load(std::memory_order_relaxed) && entries.next(entry, systemError)) {
        if (entry.kind == EntryKind::folder) {
            below.emplace_back(entry.name);
            if (below.size() == entriesInPiece) putBelow(folder, below);
            continue;
        }
        found.push_back({entry.name, entry.kind, entry.inode});
        bytes += found.back().name.size();
        if (found.size() < mostFound && bytes < mostBytesInOrder) continue;
        bytes = 0;
        if (mayBeSplit && mayHandOut()) {
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
    putBelow(folder, below);
    visitEntries(*folder, handles, found);
}

/// Leaves `names` empty.
void TreeWalk::putBelow(const std::shared_ptr<TreeFolder>& folder, std::vector<std::string>& names) {
    if (names.empty()) return;
    folder->pending.fetch_add(names.size(), std::memory_order_relaxed);
    put({folder, {}, std::exchange(names, {})});
}

bool TreeWalk::mayHandOut() {
    if (mostWorkers_ == 1) return false;
    const std::lock_guard lock(mutex_);
    return pieces_.size() < mostWaitingEntryPieces;
}

void TreeWalk::visitEntries(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
                            std::vector<WalkedEntry>& entries) {
    const auto isBefore = [](const WalkedEntry& a, const WalkedEntry& b) { return a.inode < b.inode; };
    if (entries.size() > entriesInPiece) std::sort(entries.begin(), entries.end(), isBefore);
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
        folder->wasLeft = true;
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

/// For those who abandon what was under way. Without memory for it, it is abandoned silently.
void TreeWalk::keep(Piece& piece) noexcept {
    const std::lock_guard lock(mutex_);
    try {
        pieces_.push_back({std::move(piece.folder), {}});
    } catch (const std::bad_alloc&) {
    }
}

void TreeWalk::abandonAll() noexcept {
    try {
        std::unordered_set<const TreeFolder*> seen;
        std::deque<TreeFolder*> folders;
        for (const Piece& piece : pieces_) {
            std::vector<TreeFolder*> way;
            for (TreeFolder* next = piece.folder.get(); next != nullptr && seen.insert(next).second;
                 next = next->parent().get()) {
                way.push_back(next);
            }
            // What is above them has been seen before, and stands behind them.
            folders.insert(folders.begin(), way.begin(), way.end());
        }
        for (TreeFolder* const folder : folders) {
            if (!folder->wasLeft) visitor_.abandon(*folder);
        }
    } catch (const std::bad_alloc&) {
        // What the walk has failed with is what counts.
    }
}

}  // namespace korvex::runtime::storage::posix
