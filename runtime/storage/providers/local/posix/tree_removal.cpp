// Removal of trees.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "runtime/interpreter/interrupts.h"
#include "runtime/storage/providers/local/posix/error_code.h"
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
    TreeRemoval(const vfs::AbsoluteIRI& location, Interrupts interrupts)
        : location_(location), interrupts_(interrupts) {}

    void walkFrom(FileDescriptor folder) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        runWalk(walk, makeTop(walk, std::move(folder), location_), location_, location_, context);
    }

    bool hasDestination() const override { return false; }
    /// The system lets one thread at a time change a folder; a second one would only get in its way.
    bool splitsFolders() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        const int systemError = tree_->open(folder, sourceSide);
        if (systemError == 0) return true;
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
        if (interrupts_ == Interrupts::stop && interpreter::isInterruptPending()) {
            stopIfInterrupted(locationIn(location_, folder, entry.name));
        }
        progress_.found(1, 0);
        if (::unlinkat(handles[sourceSide]->get(), entry.name.c_str(), 0) != 0) {
            // Gone already, or a folder by now: then the folder is read again, and finds it.
            const bool hasChanged = errno == ENOENT || errno == EISDIR;
            if (!hasChanged) raiseSystemError(errno, locationIn(location_, folder, entry.name), context);
        }
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
    int unlink(TreeFolder& parent, const std::string& name, int flags) {
        int systemError = 0;
        const FolderTree::Handle handle = tree_->handle(parent, sourceSide, systemError);
        if (!handle) return systemError;
        return ::unlinkat(handle->get(), name.c_str(), flags) == 0 ? 0 : errno;
    }

    const vfs::AbsoluteIRI location_;
    const Interrupts interrupts_;
    ProgressCounter progress_;
    FolderTree* tree_ = nullptr;
};

/// Removes what was copied before, and only as it was copied.
class CopiedRemoval : public TreeVisitor {
public:
    CopiedRemoval(const vfs::AbsoluteIRI& source, const vfs::AbsoluteIRI& copy)
        : source_(source), copy_(copy) {}

    void walkFrom(FileDescriptor source, FileDescriptor copy) {
        TreeWalk walk(*this);
        tree_ = &walk.tree();
        const std::shared_ptr<TreeFolder> top = makeTop(walk, std::move(source), source_);
        if (const int systemError = tree_->adopt(*top, destinationSide, std::move(copy))) {
            raiseSystemError(systemError, copy_, context);
        }
        runWalk(walk, top, source_, copy_, context);
    }

    bool hasDestination() const override { return true; }
    bool splitsFolders() const override { return false; }

    bool enter(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        const int systemError = tree_->open(folder, sourceSide);
        if (systemError != 0) {
            raiseSystemError(systemError, locationBelow(source_, folder.relativePath()), context);
        }
        if (tree_->open(folder, destinationSide) != 0) {
            raiseSystemError(EBUSY, locationBelow(source_, folder.relativePath()), context);
        }
        return true;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        struct ::stat source {};
        struct ::stat copy {};
        const char* const name = entry.name.c_str();
        int systemError = EBUSY;
        const bool isThereTwice =
            ::fstatat(handles[sourceSide]->get(), name, &source, AT_SYMLINK_NOFOLLOW) == 0 &&
            ::fstatat(handles[destinationSide]->get(), name, &copy, AT_SYMLINK_NOFOLLOW) == 0;
        if (isThereTwice && isCopyOf(copy, source)) {
            systemError = ::unlinkat(handles[sourceSide]->get(), name, 0) == 0 ? 0 : errno;
        }
        if (systemError != 0) raiseSystemError(systemError, locationIn(source_, folder, entry.name), context);
    }

    bool leave(TreeFolder& folder) override {
        if (!folder.parent()) return true;
        int systemError = 0;
        const FolderTree::Handle above = tree_->handle(*folder.parent(), sourceSide, systemError);
        if (above && ::unlinkat(above->get(), folder.name().c_str(), AT_REMOVEDIR) == 0) return true;
        if (above) systemError = errno == ENOTEMPTY || errno == EEXIST ? EBUSY : errno;
        raiseSystemError(systemError, locationBelow(source_, folder.relativePath()), context);
    }

private:
    /// Where the file system of the copy keeps times in coarser steps, two seconds must do.
    static bool isCopyOf(const struct ::stat& copy, const struct ::stat& source) noexcept {
        const bool isSameKind = (copy.st_mode & S_IFMT) == (source.st_mode & S_IFMT);
        const auto apart = copy.st_mtim.tv_sec - source.st_mtim.tv_sec;
        return isSameKind && copy.st_size == source.st_size && apart <= 2 && apart >= -2;
    }

    const vfs::AbsoluteIRI source_;
    const vfs::AbsoluteIRI copy_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

void removeTreeContents(OpenTree tree, Interrupts interrupts) {
    TreeRemoval(tree.location, interrupts).walkFrom(std::move(tree.folder));
}

void removeCopiedContents(OpenTree source, OpenTree copy) {
    CopiedRemoval(source.location, copy.location).walkFrom(std::move(source.folder), std::move(copy.folder));
}

}  // namespace korvex::runtime::storage::posix
