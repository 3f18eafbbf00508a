// Moving of trees, entry by entry, into folders that exist.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/durability.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_progress.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/tree_failures.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

namespace {

constexpr const char16_t* context = u"moving";
constexpr int mostReadings = 64;

/// Whether the source has gone by itself: there is nothing left to be moved then.
bool isGone(EntryAt source) noexcept {
    struct ::stat status {};
    return ::fstatat(source.folder, source.name, &status, AT_SYMLINK_NOFOLLOW) != 0 && errno == ENOENT;
}

class TreeMove : public TreeVisitor {
public:
    TreeMove(const vfs::AbsoluteIRI& source, const vfs::AbsoluteIRI& destination,
             provider::ReplacementPolicy policy)
        : source_(source), destination_(destination), transfer_(policy, true) {}

    void walkFrom(OpenTree source, OpenTree destination) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        const std::shared_ptr<TreeFolder> top = makeTop(walk, std::move(source.folder), source_);
        if (::fstat(destination.folder.get(), &target_) != 0) raiseSystemError(errno, destination_, context);
        if (const int systemError = tree_->adopt(*top, destinationSide, std::move(destination.folder))) {
            raiseSystemError(systemError, destination_, context);
        }
        runWalk(walk, top, source_, destination_, context);
    }

    bool hasDestination() const override { return true; }
    bool splitsFolders() const override { return false; }

    /// A folder that has no counterpart moves as a whole and is passed over; else its contents do.
    bool enter(TreeFolder& folder) override {
        if (interpreter::isInterruptPending())
            stopIfInterrupted(locationBelow(source_, folder.relativePath()));
        if (!folder.parent()) return true;
        int systemError = 0;
        const FolderTree::Handle from = tree_->handle(*folder.parent(), sourceSide, systemError);
        if (!from) fail({systemError, sourceSide}, folder);
        const FolderTree::Handle to = tree_->handle(*folder.parent(), destinationSide, systemError);
        if (!to) fail({systemError, destinationSide}, folder);
        const char* const name = folder.name().c_str();
        const EntryAt source{from->get(), name};
        systemError = renameOntoNothing(source, {to->get(), name});
        if (systemError == 0) tellMoved(folder);
        if (systemError == 0 || (systemError == ENOENT && isGone(source))) return false;
        const bool isBetweenDisks = systemError == EXDEV;
        if (!isBetweenDisks && systemError != EEXIST)
            fail({systemError, sideOfFailedRenaming(source, systemError)}, folder);

        systemError = tree_->open(folder, sourceSide);
        if (systemError == 0) systemError = obstacleToEntering(folder);
        if (systemError != 0) fail({systemError, sourceSide}, folder);
        if (isBetweenDisks) makeCounterpart(to->get(), folder);
        systemError = tree_->open(folder, destinationSide);
        if (systemError == ENOTDIR || systemError == ELOOP) systemError = EEXIST;
        if (systemError != 0) fail({systemError, destinationSide}, folder);
        return true;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        if (interpreter::isInterruptPending()) stopIfInterrupted(locationIn(source_, folder, entry.name));
        const auto location = [&] { return locationIn(source_, folder, entry.name); };
        FileProgress progress(progress_, location);
        const EntryAt from{handles[sourceSide]->get(), entry.name.c_str()};
        const EntryAt to{handles[destinationSide]->get(), entry.name.c_str()};
        Failure failure = transfer_.move(from, entry.kind, to, progress.watcher());
        const bool hasGone = failure.systemError == ENOENT && isGone(from);
        if (failure.side == destinationSide) failure.side = sideOfFailedRenaming(from, failure.systemError);
        if (failure && !hasGone) {
            const vfs::AbsoluteIRI& side = failure.side == sourceSide ? source_ : destination_;
            raiseSystemError(failure.systemError, locationIn(side, folder, entry.name), context);
        }
        progress.finish();
    }

    bool leave(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        int systemError = 0;
        if (folder.wasCreated) finishCreated(folder);
        const FolderTree::Handle above = tree_->handle(*folder.parent(), sourceSide, systemError);
        if (!above) fail({systemError, sourceSide}, folder);
        if (::unlinkat(above->get(), folder.name().c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT)
            return true;
        const bool isFilledAgain = errno == ENOTEMPTY || errno == EEXIST;
        if (isFilledAgain && ++folder.readings < mostReadings) return false;
        fail({errno, sourceSide}, folder);
    }

    void abandon(TreeFolder& folder) noexcept override {
        if (folder.wasCreated) dressAbandoned(*tree_, transfer_, folder);
    }

private:
    void makeCounterpart(int above, TreeFolder& folder) {
        folder.wasCreated = ::mkdirat(above, folder.name().c_str(), 0700) == 0;
        if (!folder.wasCreated && errno != EEXIST) fail({errno, destinationSide}, folder);
    }

    /// 0 or the errno. What is mounted here is no part of the tree, and could not go. And reached by whatever
    /// way, the move must not find its own destination: it would never end.
    int obstacleToEntering(TreeFolder& folder) {
        if (isSameFile(folder.status, target_)) return EINVAL;
        int systemError = 0;
        const FolderTree::Handle handle = tree_->handle(folder, sourceSide, systemError);
        return handle && isMountPoint(handle->get()) ? EBUSY : systemError;
    }

    void finishCreated(TreeFolder& folder) {
        int systemError = 0;
        const FolderTree::Handle source = tree_->handle(folder, sourceSide, systemError);
        if (!source) fail({systemError, sourceSide}, folder);
        const FolderTree::Handle destination = tree_->handle(folder, destinationSide, systemError);
        if (!destination) fail({systemError, destinationSide}, folder);
        const Failure failure = transfer_.dress(source->get(), folder.status, destination->get());
        if (failure) fail(failure, folder);
        // What is in it has reached the storage with each entry; its own name has not.
        const FolderTree::Handle above = tree_->handle(*folder.parent(), destinationSide, systemError);
        if (above) systemError = syncFile(above->get());
        if (systemError != 0) fail({systemError, destinationSide}, folder);
    }

    void tellMoved(const TreeFolder& folder) {
        progress_.found(1, 0);
        progress_.finished(1, 0, [&] { return locationBelow(source_, folder.relativePath()); });
    }

    [[noreturn]] void fail(const Failure& failure, const TreeFolder& folder) const {
        const vfs::AbsoluteIRI& side = failure.side == sourceSide ? source_ : destination_;
        raiseSystemError(failure.systemError, locationBelow(side, folder.relativePath()), context);
    }

    const vfs::AbsoluteIRI source_;
    const vfs::AbsoluteIRI destination_;
    struct ::stat target_ {};
    FileTransfer transfer_;
    ProgressCounter progress_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

void moveTreeContents(OpenTree source, OpenTree destination, provider::ReplacementPolicy policy) {
    TreeMove move(source.location, destination.location, policy);
    move.walkFrom(std::move(source), std::move(destination));
}

}  // namespace korvex::runtime::storage::posix
