// The removing part of moves between two providers.
#include "runtime/storage/transfer_removals.h"

#include <utility>

#include "runtime/storage/transfer_progress.h"
#include "runtime/storage/transfer_steps.h"

namespace korvex::runtime::storage {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

namespace {

[[noreturn]] void raiseInUse(const AbsoluteIRI& location) {
    throw vfs::Exception(vfs::resourceInUse, location, u"removing what was moved");
}

/// False when nothing is left of it.
bool requireFolder(Provider& provider, const AbsoluteIRI& location) {
    const ExistenceTypeExtended kind = provider.extendedExistence(location);
    if (kind != provider::ExtendedFolder && kind != provider::ExtendedNothing) raiseInUse(location);
    return kind == provider::ExtendedFolder;
}

/// A folder from which all that was copied is gone. What came meanwhile is what stands in the way.
void removeEmptied(Provider& provider, const AbsoluteIRI& folder) {
    if (!requireFolder(provider, folder)) return;
    try {
        provider.removeFolder(folder, vfs::RemoveEmptyFolder);
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != vfs::folderNotEmpty) throw;
        const WalkedFolder left = listForWalk(provider, folder);
        raiseInUse(left.entries.empty() ? folder : AbsoluteIRI(folder, left.entries.front().name));
    }
}

/// Goes the way of the copy once more.
class CopiedTreeRemoval {
public:
    explicit CopiedTreeRemoval(const ServedLocation& top)
        : provider_(top.provider), top_(top.location), folder_(top.location) {}

    void remove(const CopiedItems& copied) {
        if (!enter(top_)) return;
        for (const CopiedItem& item : copied) {
            stopIfInterrupted(folder_);
            if (levelsGone_ > 0) {
                skip(item);
            } else {
                removeItem(item);
            }
        }
        leave();
    }

private:
    struct OpenFolder {
        KeptFolder kept;
        bool isEmpty;
    };

    /// False when nothing is left of the folder.
    bool enter(const AbsoluteIRI& folder) {
        if (!requireFolder(provider_, folder)) return false;
        WalkedFolder listed = listForWalk(provider_, folder);
        open_.push_back({std::move(listed.kept), listed.entries.empty()});
        folder_ = folder;
        return true;
    }

    void removeItem(const CopiedItem& item) {
        if (item.kind == CopiedItem::Kind::endOfFolder) return leave();
        const AbsoluteIRI location = itemIn(folder_, open_.back().kept, item.name);
        if (item.kind == CopiedItem::Kind::folder) {
            // In an empty folder nothing is looked up: nothing is kept of it, so that a path might lead away.
            if (open_.back().isEmpty || !enter(location)) levelsGone_ = 1;
        } else if (!open_.back().isEmpty &&
                   provider_.extendedExistence(location) != provider::ExtendedNothing) {
            removeCopiedFile({provider_, location}, item.file);
        }
    }

    void skip(const CopiedItem& item) {
        if (item.kind == CopiedItem::Kind::folder) ++levelsGone_;
        if (item.kind == CopiedItem::Kind::endOfFolder) --levelsGone_;
    }

    void leave() {
        open_.pop_back();
        if (open_.empty()) return removeEmptied(provider_, top_);
        const AbsoluteIRI above = folder_.getParent();
        removeEmptied(provider_, itemIn(above, open_.back().kept, folder_.getName()));
        folder_ = above;
    }

    Provider& provider_;
    const AbsoluteIRI top_;
    AbsoluteIRI folder_;
    std::vector<OpenFolder> open_;
    /// How many folders deep what follows is in one that is gone.
    std::size_t levelsGone_ = 0;
};

}  // namespace

void removeCopiedFile(const ServedLocation& file, const CopiedFile& copied) {
    const ExistenceTypeExtended kind = file.provider.extendedExistence(file.location);
    // Of what is gone altogether the reading tells.
    if (kind != provider::ExtendedFile && kind != provider::ExtendedNothing) raiseInUse(file.location);
    const FileAttributes now = file.provider.read(file.location)->attributes();
    const bool isUnchanged = copied.isSettled && now.size == copied.size && now.changed == copied.changed;
    if (!isUnchanged) raiseInUse(file.location);
    file.provider.removeFile(file.location);
}

void removeCopiedTree(const ServedLocation& folder, const CopiedItems& copied) {
    CopiedTreeRemoval(folder).remove(copied);
}

}  // namespace korvex::runtime::storage
