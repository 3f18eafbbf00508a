// Copying of trees.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/file_attributes.h"
#include "runtime/storage/providers/local/posix/file_progress.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/tree_failures.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;
namespace provider = foundation::storage::provider;

namespace {

constexpr const char16_t* context = u"copying";

class TreeCopy : public TreeVisitor {
public:
    TreeCopy(const vfs::AbsoluteIRI& source, const vfs::AbsoluteIRI& destination, CopyInto into,
             provider::ReplacementPolicy policy, CopiedEntries* copied)
        : source_(source),
          destination_(destination),
          into_(into),
          mayMerge_(policy != provider::ReplaceWritable),
          copied_(copied),
          transfer_(policy, copied != nullptr) {}

    void walkFrom(OpenTree source, OpenTree destination) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        const std::shared_ptr<TreeFolder> top = makeTop(walk, std::move(source.folder), source_);
        top->wasCreated = into_ != CopyInto::standing;
        if (::fstat(destination.folder.get(), &target_) != 0) raiseSystemError(errno, destination_, context);
        if (const int systemError = tree_->adopt(*top, destinationSide, std::move(destination.folder))) {
            raiseSystemError(systemError, destination_, context);
        }
        runWalk(walk, top, source_, destination_, context);
    }

    bool hasDestination() const override { return true; }

    bool enter(TreeFolder& folder) override {
        if (interpreter::isInterruptPending())
            stopIfInterrupted(locationBelow(source_, folder.relativePath()));
        if (!folder.parent()) {
            askForAccessLists(folder);
            return true;
        }
        if (const int systemError = tree_->open(folder, sourceSide)) fail({systemError, sourceSide}, folder);
        // Reached by whatever way, the copy must not find itself.
        if (isSameFile(folder.status, target_))
            throw vfs::Exception(vfs::invalidLocation, destination_, context);
        makeDestination(folder);
        if (const int systemError = tree_->open(folder, destinationSide)) {
            // What stands there in the folder's place is a file or a link.
            fail({systemError == ENOTDIR || systemError == ELOOP ? EEXIST : systemError, destinationSide},
                 folder);
        }
        askForAccessLists(folder);
        if (copied_ != nullptr) {
            refuseUnlessApart(folder);
            copied_->addFolder(folder);
        }
        return true;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        if (interpreter::isInterruptPending()) stopIfInterrupted(locationIn(source_, folder, entry.name));
        const auto location = [&] { return locationIn(source_, folder, entry.name); };
        FileProgress progress(progress_, location);
        if (copied_ != nullptr) {
            const EntryAt source{handles[sourceSide]->get(), entry.name.c_str()};
            if (isMountPoint(source)) raise({EBUSY, sourceSide}, location());
            copied_->add(folder, source.folder, entry.name);
        }
        const Failure failure =
            transfer_.copy({handles[sourceSide]->get(), entry.name.c_str()}, entry.kind,
                           {handles[destinationSide]->get(), entry.name.c_str()}, progress.watcher(),
                           {folder.wasCreated, isHidden(folder), target_.st_dev, folder.handsAccessListsOn});
        if (failure) raise(failure, locationIn(sideOf(failure), folder, entry.name));
        progress.finish();
    }

    /// Times and permission bits come last: making entries changes the one and may need the other.
    bool leave(TreeFolder& folder) override {
        if (!folder.wasCreated) return true;
        int systemError = 0;
        const FolderTree::Handle destination = tree_->handle(folder, destinationSide, systemError);
        if (!destination) fail({systemError, destinationSide}, folder);
        const FolderTree::Handle source = tree_->handle(folder, sourceSide, systemError);
        if (!source) fail({systemError, sourceSide}, folder);
        const bool hasInherited = !folder.parent() || folder.parent()->handsAccessListsOn;
        const Failure failure =
            transfer_.dress(source->get(), folder.status, destination->get(), hasInherited);
        if (failure) fail(failure, folder);
        return true;
    }

    void abandon(TreeFolder& folder) noexcept override {
        if (folder.wasCreated) dressAbandoned(*tree_, transfer_, folder);
    }

private:
    /// Before a move: what could not go from its source in the end is not copied in the first place, and of a
    /// folder that is its own destination, over whatever mounts, the only copy would go.
    void refuseUnlessApart(TreeFolder& folder) {
        int systemError = 0;
        const FolderTree::Handle source = tree_->handle(folder, sourceSide, systemError);
        if (source && isMountPoint(source->get())) systemError = EBUSY;
        if (systemError != 0) fail({systemError, sourceSide}, folder);
        if (folder.wasCreated) return;
        const FolderTree::Handle destination = tree_->handle(folder, destinationSide, systemError);
        struct ::stat standing {};
        if (destination && ::fstat(destination->get(), &standing) != 0) systemError = errno;
        if (systemError == 0 && isSameFile(folder.status, standing)) systemError = EBUSY;
        if (systemError != 0) fail({systemError, destinationSide}, folder);
        if (standing.st_dev != target_.st_dev) copied_->noteFurtherDisk();
    }

    bool isHidden(const TreeFolder& folder) const noexcept {
        return into_ == CopyInto::hidden && folder.wasCreated;
    }

    /// Of a folder that was here before, each new entry is asked: somebody may change what it hands on. What
    /// a folder has none of, those made in it have not either.
    void askForAccessLists(TreeFolder& folder) {
        const bool isOfNone = folder.wasCreated && folder.parent() && !folder.parent()->handsAccessListsOn;
        if (isOfNone) {
            folder.handsAccessListsOn = false;
            return;
        }
        int systemError = 0;
        const FolderTree::Handle made =
            folder.wasCreated ? tree_->handle(folder, destinationSide, systemError) : nullptr;
        folder.handsAccessListsOn = !made || handsAccessListsOn(made->get());
    }

    void makeDestination(TreeFolder& folder) {
        int systemError = 0;
        const FolderTree::Handle above = tree_->handle(*folder.parent(), destinationSide, systemError);
        if (!above) fail({systemError, destinationSide}, folder);
        // Into what is hidden nobody else can get: its folders have their bits from the start. But the
        // group's bits would be what an access list from the folder above grants to others.
        const bool hasBits = isHidden(*folder.parent()) && !folder.parent()->handsAccessListsOn;
        const mode_t bits = hasBits ? (folder.status.st_mode & 0777) | 0700 : 0700;
        folder.wasCreated = ::mkdirat(above->get(), folder.name().c_str(), bits) == 0;
        const bool mayGoOn = folder.wasCreated || (errno == EEXIST && mayMerge_);
        if (!mayGoOn) fail({errno, destinationSide}, folder);
    }

    const vfs::AbsoluteIRI& sideOf(const Failure& failure) const {
        return failure.side == sourceSide ? source_ : destination_;
    }

    [[noreturn]] void raise(const Failure& failure, const vfs::AbsoluteIRI& location) const {
        raiseSystemError(failure.systemError, location, context);
    }

    [[noreturn]] void fail(const Failure& failure, const TreeFolder& folder) const {
        raise(failure, locationBelow(sideOf(failure), folder.relativePath()));
    }

    const vfs::AbsoluteIRI source_;
    const vfs::AbsoluteIRI destination_;
    const CopyInto into_;
    const bool mayMerge_;
    CopiedEntries* const copied_;
    struct ::stat target_ {};
    FileTransfer transfer_;
    ProgressCounter progress_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

void copyTree(OpenTree source, OpenTree destination, CopyInto into, provider::ReplacementPolicy policy,
              CopiedEntries* copied) {
    TreeCopy copy(source.location, destination.location, into, policy, copied);
    copy.walkFrom(std::move(source), std::move(destination));
}

}  // namespace korvex::runtime::storage::posix
