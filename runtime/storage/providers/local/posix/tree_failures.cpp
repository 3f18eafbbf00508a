// From a failure on a walk to the exception that tells it.
#include "runtime/storage/providers/local/posix/tree_failures.h"

#include <utility>

#include "runtime/storage/providers/local/posix/error_code.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage::posix {

namespace vfs = foundation::storage::vfs;

vfs::AbsoluteIRI locationBelow(const vfs::AbsoluteIRI& top, const std::string& path) {
    return path.empty() ? top : vfs::AbsoluteIRI(top, text::fromBytes(path));
}

vfs::AbsoluteIRI locationIn(const vfs::AbsoluteIRI& top, const TreeFolder& folder, const std::string& name) {
    const std::string above = folder.relativePath();
    return locationBelow(top, above.empty() ? name : above + '/' + name);
}

void runWalk(TreeWalk& walk, std::shared_ptr<TreeFolder> top, const vfs::AbsoluteIRI& source,
             const vfs::AbsoluteIRI& destination, const char16_t* context) {
    try {
        walk.run(std::move(top));
    } catch (const WalkFailure& failure) {
        const vfs::AbsoluteIRI& side = failure.side == sourceSide ? source : destination;
        raiseSystemError(failure.systemError, locationBelow(side, failure.relativePath), context);
    }
}

std::shared_ptr<TreeFolder> makeTop(TreeWalk& walk, FileDescriptor source,
                                    const vfs::AbsoluteIRI& sourceLocation) {
    auto top = std::make_shared<TreeFolder>(walk.tree(), nullptr, std::string());
    if (const int systemError = walk.tree().adopt(*top, sourceSide, std::move(source))) {
        raiseSystemError(systemError, sourceLocation, u"opening the folder");
    }
    return top;
}

void dressAbandoned(FolderTree& tree, FileTransfer& transfer, TreeFolder& folder) noexcept {
    try {
        int systemError = 0;
        const FolderTree::Handle source = tree.handle(folder, sourceSide, systemError);
        const FolderTree::Handle destination = tree.handle(folder, destinationSide, systemError);
        if (!source || !destination) return;
        struct ::stat status = folder.status;
        status.st_mode |= S_IRWXU;
        transfer.dress(source->get(), status, destination->get());
    } catch (const std::exception&) {
        // What the walk has failed with is what counts.
    }
}

}  // namespace korvex::runtime::storage::posix
