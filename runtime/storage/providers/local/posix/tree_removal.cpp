// Removal of trees.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/tree_failures.h"
#include "runtime/storage/providers/local/posix/tree_operations.h"
#include "runtime/storage/transfer_progress.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

namespace {

constexpr const char16_t* context = u"removing";
/// How often a folder is read again that somebody keeps filling.
constexpr int mostReadings = 64;

class TreeRemoval : public TreeVisitor {
public:
    TreeRemoval(const vfs::AbsoluteIRI& location, Purpose purpose) : location_(location), purpose_(purpose) {}

    void walkFrom(FileDescriptor folder) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        runWalk(walk, makeTop(walk, std::move(folder), location_), location_, location_, context);
    }

    bool hasDestination() const override { return false; }
    /// The system lets one thread at a time change a folder; a second one would only get in its way.
    bool splitsFolders() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (isInterrupted()) stopIfInterrupted(locationBelow(location_, folder.relativePath()));
        if (!folder.parent()) return true;
        if (purpose_ == Purpose::undoing) makeAccessible(folder);
        const int systemError = tree_->open(folder, sourceSide);
        if (systemError == 0) {
            refuseMountPoint(folder);
            return true;
        }
        // Somebody took the folder away, or put a link in its place: the link goes, what it leads to stays.
        if (systemError == ELOOP || systemError == ENOTDIR) unlink(*folder.parent(), folder.name(), 0);
        const bool isGone = systemError == ELOOP || systemError == ENOTDIR || systemError == ENOENT;
        // One that may not be read goes all the same when it is empty.
        if (!isGone && unlink(*folder.parent(), folder.name(), AT_REMOVEDIR) != 0) {
            raiseSystemError(systemError, locationBelow(location_, folder.relativePath()), context);
        }
        return false;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        if (isInterrupted()) stopIfInterrupted(locationIn(location_, folder, entry.name));
        if (purpose_ == Purpose::removal) progress_.found(1, 0);
        if (::unlinkat(handles[sourceSide]->get(), entry.name.c_str(), 0) != 0) {
            // Gone already, or a folder by now: then the folder is read again, and finds it.
            const bool hasChanged = errno == ENOENT || errno == EISDIR;
            if (!hasChanged) raiseSystemError(errno, locationIn(location_, folder, entry.name), context);
        }
        if (purpose_ == Purpose::removal)
            progress_.finished(1, 0, [&] { return locationIn(location_, folder, entry.name); });
    }

    bool leave(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        const int systemError = unlink(*folder.parent(), folder.name(), AT_REMOVEDIR);
        if (systemError == 0 || systemError == ENOENT) return true;
        const bool isFilledAgain = systemError == ENOTEMPTY || systemError == EEXIST;
        if (isFilledAgain && ++folder.readings < mostReadings) return false;
        if (systemError == ENOTDIR && unlink(*folder.parent(), folder.name(), 0) == 0) return true;
        raiseSystemError(systemError, locationBelow(location_, folder.relativePath()), context);
    }

private:
    bool isInterrupted() const noexcept {
        return purpose_ == Purpose::removal && interpreter::isInterruptPending();
    }

    /// It could not go in the end, so what is in it stays: it is no part of this tree.
    void refuseMountPoint(TreeFolder& folder) {
        int systemError = 0;
        const FolderTree::Handle handle = tree_->handle(folder, sourceSide, systemError);
        if (handle && isMountPoint(handle->get())) systemError = EBUSY;
        if (systemError != 0)
            raiseSystemError(systemError, locationBelow(location_, folder.relativePath()), context);
    }

    void makeAccessible(TreeFolder& folder) {
        int systemError = 0;
        const FolderTree::Handle above = tree_->handle(*folder.parent(), sourceSide, systemError);
        if (above) ::fchmodat(above->get(), folder.name().c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW);
    }

    int unlink(TreeFolder& parent, const std::string& name, int flags) {
        int systemError = 0;
        const FolderTree::Handle handle = tree_->handle(parent, sourceSide, systemError);
        if (!handle) return systemError;
        return ::unlinkat(handle->get(), name.c_str(), flags) == 0 ? 0 : errno;
    }

    const vfs::AbsoluteIRI location_;
    const Purpose purpose_;
    ProgressCounter progress_;
    FolderTree* tree_ = nullptr;
};

/// Removes what was copied before, and only as it was copied.
class CopiedRemoval : public TreeVisitor {
public:
    CopiedRemoval(const vfs::AbsoluteIRI& source, const CopiedEntries& copied)
        : source_(source), copied_(copied) {}

    void walkFrom(FileDescriptor source) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        runWalk(walk, makeTop(walk, std::move(source), source_), source_, source_, context);
    }

    bool hasDestination() const override { return false; }
    bool splitsFolders() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (interpreter::isInterruptPending())
            stopIfInterrupted(locationBelow(source_, folder.relativePath()));
        if (!folder.parent()) return true;
        const int systemError = tree_->open(folder, sourceSide);
        if (systemError == ENOENT) return false;
        const bool isAnother = systemError == ELOOP || systemError == ENOTDIR;
        if (systemError != 0) fail(isAnother ? EBUSY : systemError, folder);
        if (!copied_.hasFolder(folder)) fail(EBUSY, folder);
        return true;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        if (interpreter::isInterruptPending()) stopIfInterrupted(locationIn(source_, folder, entry.name));
        const int handle = handles[sourceSide]->get();
        int systemError = 0;
        const CopiedState state = copied_.stateOf(folder, handle, entry.name, systemError);
        if (state == CopiedState::different && systemError == 0) systemError = EBUSY;
        if (state == CopiedState::asCopied && ::unlinkat(handle, entry.name.c_str(), 0) != 0)
            systemError = errno;
        if (systemError != 0 && systemError != ENOENT)
            raiseSystemError(systemError, locationIn(source_, folder, entry.name), context);
    }

    /// Read again while it is not empty: the system may pass over entries of a folder from which others go.
    bool leave(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        int systemError = 0;
        const FolderTree::Handle above = tree_->handle(*folder.parent(), sourceSide, systemError);
        if (!above) fail(systemError, folder);
        if (::unlinkat(above->get(), folder.name().c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT)
            return true;
        const bool isNotEmpty = errno == ENOTEMPTY || errno == EEXIST;
        if (isNotEmpty && ++folder.readings < mostReadings) return false;
        fail(isNotEmpty ? EBUSY : errno, folder);
    }

private:
    [[noreturn]] void fail(int systemError, const TreeFolder& folder) const {
        raiseSystemError(systemError, locationBelow(source_, folder.relativePath()), context);
    }

    const vfs::AbsoluteIRI source_;
    const CopiedEntries& copied_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

void removeTreeContents(OpenTree tree, Purpose purpose) {
    TreeRemoval(tree.location, purpose).walkFrom(std::move(tree.folder));
}

void removeCopiedContents(OpenTree source, const CopiedEntries& copied) {
    CopiedRemoval(source.location, copied).walkFrom(std::move(source.folder));
}

}  // namespace korvex::runtime::storage::posix
