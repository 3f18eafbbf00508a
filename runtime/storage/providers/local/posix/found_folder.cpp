// A folder that was listed, held for the sake of the entries that the listing gave.
#include "runtime/storage/providers/local/posix/found_folder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "runtime/storage/providers/local/posix/entry_at.h"
#include "runtime/storage/providers/local/posix/leaving.h"
#include "runtime/storage/providers/local/posix/open_files.h"
#include "runtime/text/encoding.h"

namespace korvex::runtime::storage::posix {

namespace {

/// A listing that is kept takes this many handles at least.
constexpr std::size_t fewestOfOne = 4;
constexpr std::size_t fewestListings = 4;

/// The handles that all kept listings may have open together.
class HandleBudget {
public:
    /// How many a further listing may have; 0 when there are too many listings.
    std::size_t take() {
        const std::size_t limit = limitOfOpenFiles();
        const std::lock_guard lock(mutex_);
        if (listings_ >= std::max(limit / 16, fewestListings)) return 0;
        ++listings_;
        // Half of what is left, so that there is something left for the next one.
        const std::size_t left = limit / 3 - std::min(limit / 3, taken_);
        const std::size_t most = std::clamp(left / 2, fewestOfOne, openFoldersFor(limit));
        taken_ += most;
        return most;
    }
    void giveBack(std::size_t handles) noexcept {
        const std::lock_guard lock(mutex_);
        --listings_;
        taken_ -= handles;
    }

private:
    std::mutex mutex_;
    std::size_t listings_ = 0;
    std::size_t taken_ = 0;
};

HandleBudget& budget() {
    static HandleBudget handles;
    return handles;
}

/// A listing's share of the handles for as long as it is kept; none when there are too many listings.
class HandleShare {
public:
    HandleShare() : handles_(budget().take()) {}
    ~HandleShare() {
        if (handles_ != 0) budget().giveBack(handles_);
    }
    HandleShare(const HandleShare&) = delete;
    HandleShare& operator=(const HandleShare&) = delete;

    std::size_t handles() const noexcept { return handles_; }

private:
    const std::size_t handles_;
};

std::string lastComponent(const AbsoluteIRI& location) {
    const std::u16string& path = location.parts().path;
    std::string bytes;
    (void)text::toBytes(std::u16string_view(path).substr(path.rfind(u'/') + 1), bytes);
    return bytes;
}

}  // namespace

/// The folders of one listing and of the listings below it.
struct FoundFolder::KeptTree {
    const HandleShare share;
    FolderTree folders{share.handles()};
};

std::shared_ptr<const FoundFolder> FoundFolder::keep(FileDescriptor folder, const AbsoluteIRI& location) {
    auto above = of(location);
    const bool isMounted = above && (above->isMountedInTree_ || isMountPoint(folder.get()));
    // What was reached through a link could not be opened again from above.
    if (above && !isBelow(*above, folder.get(), location)) above = nullptr;
    std::shared_ptr<KeptTree> tree = above ? above->tree_ : nullptr;
    if (!tree) {
        tree = std::make_shared<KeptTree>();
        if (tree->share.handles() == 0) return nullptr;
    }
    auto kept = std::make_shared<TreeFolder>(tree->folders, above ? above->folder_ : nullptr,
                                             lastComponent(location));
    if (tree->folders.adopt(*kept, sourceSide, std::move(folder)) != 0) return nullptr;
    return std::shared_ptr<const FoundFolder>(new FoundFolder(std::move(tree), std::move(kept), isMounted));
}

bool FoundFolder::isBelow(const FoundFolder& above, int folder, const AbsoluteIRI& location) {
    if (location.parts().isKnownFolder) return true;
    int systemError = 0;
    const FolderTree::Handle handle = above.handle(systemError);
    struct ::stat opened {};
    struct ::stat named {};
    return handle && ::fstat(folder, &opened) == 0 &&
           ::fstatat(handle->get(), lastComponent(location).c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           isSameFile(opened, named);
}

std::shared_ptr<const FoundFolder> FoundFolder::of(const AbsoluteIRI& location) noexcept {
    // Nobody else finds anything under the scheme of this provider.
    return std::static_pointer_cast<const FoundFolder>(location.parts().found);
}

FolderTree::Handle FoundFolder::handle(int& systemError) const {
    return tree_->folders.handle(*folder_, sourceSide, systemError);
}

}  // namespace korvex::runtime::storage::posix
