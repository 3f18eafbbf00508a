// Removal of trees.
#include <fcntl.h>
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
    explicit TreeRemoval(const vfs::AbsoluteIRI& location) : location_(location) {}

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
        if (systemError != ELOOP && systemError != ENOTDIR && systemError != ENOENT) {
            raiseSystemError(systemError, locationBelow(location_, folder.relativePath()), context);
        }
        return false;
    }

    void visit(TreeFolder& folder, const FolderTree::Handle (&handles)[2],
               const WalkedEntry& entry) override {
        if (interpreter::isInterruptPending()) stopIfInterrupted(locationIn(location_, folder, entry.name));
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
    ProgressCounter progress_;
    FolderTree* tree_ = nullptr;
};

}  // namespace

void removeTreeContents(OpenTree tree) { TreeRemoval(tree.location).walkFrom(std::move(tree.folder)); }

}  // namespace korvex::runtime::storage::posix
