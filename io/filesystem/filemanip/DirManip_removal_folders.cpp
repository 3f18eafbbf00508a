// The removal of folders with what they hold, item by item, down to any depth.
#include <algorithm>
#include <deque>
#include <iterator>
#include <utility>

#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/DirManip_removal_steps.h"
#include "io/filesystem/filemanip/DirManip_search_path.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using vfs::AbsoluteIRI;
using vfs::Folder;

namespace {

void warnOfPackage(const Folder& folder) {
    const auto notice = noticeFolderInPackage(folder, PackageNoticeMode::fromPackage);
    if (!notice) return;
    if (notice->editable) {
        kxWarningMsgId(
            KORVEX::RMDIR::RemovedFolderFromEditablePackage(notice->itemText, notice->packageName));
    } else {
        kxWarningMsgId(KORVEX::RMDIR::RemovedFolderFromPackage(notice->itemText, notice->packageName));
    }
}

/// The handle of what is to be removed; with links resolved, that of what the link leads to.
std::unique_ptr<Folder> folderAt(const AbsoluteIRI& location, bool resolveLinks) {
    const vfs::StorageSystemReference storage = Velquist::KorvexStorageSystem::GetStorageSystemReference();
    auto folder = std::make_unique<Folder>(location, storage);
    if (!resolveLinks) return folder;
    return std::make_unique<Folder>(folder->getCanonicalLocation(), storage);
}

}  // namespace

struct RemoveDir::Progress {
    std::u16string& failedList;
    bool& limitReached;
    bool& somethingFailed;
    std::vector<AbsoluteIRI>& removedFolders;

    void recordFailure(const resource_core::BaseMsgID& message) const {
        filemanip::recordFailure(message, failedList, limitReached, somethingFailed);
    }
    void reportItemError(const vfs::Exception& failure, bool isIRI) const {
        filemanip::reportItemError(failure, isIRI, failedList, limitReached, somethingFailed);
    }
};

struct RemoveDir::FoundFolder {
    ExistenceTypeExtended type;
    AbsoluteIRI location;
};

/// They are traced as a function of the given signature for as long as they are there.
struct RemoveDir::Items {
    Items(std::string_view signature, const Folder& parent, const std::u16string& pattern)
        : scope(traceLogger(), signature, dirManipSourceFile, __LINE__),
          listing(parent.listAll(pattern)),
          next(listing.begin()) {}

    /// What has become of the folder among them that came up last.
    void noteFolder(bool isRemoved) {
        trace(severity::rawValue,
              [&](auto& record) { record << "Value of tempFilesRemoved: " << isRemoved; });
        removedAny = removedAny || isRemoved;
    }

    const TraceScope scope;
    const vfs::FolderListing<vfs::ListEntry> listing;
    vfs::FolderListingIterator<vfs::ListEntry> next;
    bool removedAny = false;
};

/// Traced as a function, too.
struct RemoveDir::FolderRemoval {
    FolderRemoval(std::string_view signature, FoundFolder found, bool isTopLevel)
        : scope(traceLogger(), signature, dirManipSourceFile, __LINE__),
          type(found.type),
          location(std::move(found.location)),
          topLevel(isTopLevel) {}

    const TraceScope scope;
    const ExistenceTypeExtended type;
    const AbsoluteIRI location;
    const bool topLevel;

    std::unique_ptr<Folder> folder;  ///< none before the beginning
    bool isLink = false;             ///< and stays one: what it leads to is not meant
    bool isEmptied = false;          ///< what it holds goes first
    std::unique_ptr<Items> items;    ///< while a folder among them is removed
    bool result = false;
};

/// Those that have begun, each in the folder of the one before.
class RemoveDir::FolderRemovals {
public:
    FolderRemovals() = default;
    ~FolderRemovals() {
        // The last one first, as functions return.
        while (!removals_.empty())
            removals_.pop_back();
    }
    FolderRemovals(const FolderRemovals&) = delete;
    FolderRemovals& operator=(const FolderRemovals&) = delete;

    void add(std::string_view signature, FoundFolder found, bool topLevel) {
        removals_.emplace_back(signature, std::move(found), topLevel);
    }
    FolderRemoval& last() { return removals_.back(); }
    /// Takes the last one, which is over, off the list; whether another one goes on then.
    bool end() {
        const bool isRemoved = last().result;
        const bool isOutermost = removals_.size() == 1;
        removals_.pop_back();
        if (!isOutermost) last().items->noteFolder(isRemoved);
        return !isOutermost;
    }
    /// Whether the folder of the last one is being emptied already: a link that is resolved may lead back to
    /// a folder that is on the way to it, and so in a circle.
    bool isLastInACircle() const {
        const AbsoluteIRI& folder = removals_.back().folder->getLocation();
        return std::any_of(removals_.begin(), std::prev(removals_.end()),
                           [&](const FolderRemoval& above) { return above.folder->getLocation() == folder; });
    }

private:
    std::deque<FolderRemoval> removals_;
};

bool RemoveDir::removeMultipleItems(const Folder& parent, bool topLevel, std::u16string& failedList,
                                    bool& limitReached, bool& somethingFailed,
                                    std::vector<AbsoluteIRI>& removedFolders,
                                    const std::optional<AbsoluteIRI>& target,
                                    const std::u16string& strOriginalPath) {
    Items items(KORVEX_FUNCTION_SIGNATURE, parent, target ? target->getName() : std::u16string());
    if (target && items.listing.empty()) {
        trace(severity::flowOfControl, "Not a directory; folder contents and resources not found.");
        reportMissingItem(*target, strOriginalPath);
        return false;
    }
    const Progress progress{failedList, limitReached, somethingFailed, removedFolders};
    while (const std::optional<FoundFolder> found = removeUpToFolder(items, topLevel, progress)) {
        items.noteFolder(doFolderRemoval(found->type, found->location, topLevel, failedList, limitReached,
                                         somethingFailed, removedFolders));
    }
    return items.removedAny;
}

std::optional<RemoveDir::FoundFolder> RemoveDir::removeMultipleItems(FolderRemoval& removal,
                                                                     const Progress& progress) {
    // Held here meanwhile, for a failure is the end of them.
    std::unique_ptr<Items> items = std::move(removal.items);
    if (!items) {
        items = std::make_unique<Items>(KORVEX_FUNCTION_SIGNATURE, *removal.folder, std::u16string());
    }
    std::optional<FoundFolder> found = removeUpToFolder(*items, false, progress);
    if (found) {
        removal.items = std::move(items);
    } else {
        removal.result = items->removedAny;
    }
    return found;
}

std::optional<RemoveDir::FoundFolder> RemoveDir::removeUpToFolder(Items& items, bool topLevel,
                                                                  const Progress& progress) {
    while (items.next != items.listing.end()) {
        const vfs::ListEntry& entry = *items.next++;
        const vfs::Item& fileOrFolder = entry.getFileOrFolder();
        const bool isFile = boost::get<vfs::File>(&fileOrFolder) != nullptr;
        trace(severity::flowOfControl, [&](auto& record) {
            record << "Value of fileOrFolder: " << fileOrFolder << ", isFile? " << isFile;
        });
        if (!isFile) {
            return FoundFolder{core::getExtendedExistenceType(entry.getLocation(), true),
                               entry.getLocation()};
        }
        // A link to a file counts as a file: storage is not asked.
        const bool isRemoved =
            doFileRemoval(provider::ExtendedFile, entry.getLocation(), topLevel, progress.failedList,
                          progress.limitReached, progress.somethingFailed);
        items.removedAny = items.removedAny || isRemoved;
    }
    return std::nullopt;
}

bool RemoveDir::doFolderRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                                std::u16string& failedList, bool& limitReached, bool& somethingFailed,
                                std::vector<AbsoluteIRI>& removedFolders) {
    const Progress progress{failedList, limitReached, somethingFailed, removedFolders};
    bool result = false;
    FolderRemovals removals;
    removals.add(KORVEX_FUNCTION_SIGNATURE, {type, location}, topLevel);
    do {
        while (std::optional<FoundFolder> found = proceed(removals, progress))
            removals.add(KORVEX_FUNCTION_SIGNATURE, std::move(*found), false);
        result = removals.last().result;
    } while (removals.end());
    return result;
}

std::optional<RemoveDir::FoundFolder> RemoveDir::proceed(FolderRemovals& removals, const Progress& progress) {
    FolderRemoval& removal = removals.last();
    try {
        if (!removal.folder && !begin(removal, removals)) return std::nullopt;
        if (removal.isEmptied) {
            if (std::optional<FoundFolder> found = removeMultipleItems(removal, progress)) return found;
            trace(severity::flowOfControl, "Setting vfsFolder writable to True.");
            makeWritable(*removal.folder);
        }
        removeEmptied(removal, progress);
    } catch (const vfs::Exception& failure) {
        removal.result = recoverFromFolderFailure(failure, removal, progress);
    }
    return std::nullopt;
}

bool RemoveDir::begin(FolderRemoval& removal, const FolderRemovals& removals) const {
    removal.folder = folderAt(removal.location, resolveLinks_);
    removal.isLink = removal.type == provider::ExtendedLinkToFolder && !resolveLinks_;
    // What was listed as a folder and is none by now is not entered, a link that was broken for a moment
    // above all: the storage would follow it.
    removal.isEmptied = recursive_ && (resolveLinks_ || removal.type == provider::ExtendedFolder);
    if (!removal.isEmptied) return true;
    if (resolveLinks_ && removals.isLastInACircle()) return false;
    trace(severity::flowOfControl, "Recursively trying to remove multiple items.");
    return true;
}

void RemoveDir::removeEmptied(FolderRemoval& removal, const Progress& progress) {
    const Folder& folder = *removal.folder;
    if (!recursive_ && !folder.getAttributes().isWritable()) {
        return recordReadOnlyFolder(removal.location, progress);
    }
    const bool isNamedLink = removal.topLevel && removal.isLink;
    if (isNamedLink) return;
    warnOfPackage(folder);
    folder.removeFolder(vfs::RemoveEmptyFolder);
    removal.result = true;
    trace(severity::rawValue, [&](auto& record) { record << "folder Location: " << folder.getLocation(); });
    if (!removal.isLink && folder.getLocation().getScheme() == u"file") {
        updateWindowsPath(folder.getLocation());
        // By its text: the location itself would keep what was listed open.
        progress.removedFolders.emplace_back(folder.getLocation().toString());
    }
}

void RemoveDir::recordReadOnlyFolder(const AbsoluteIRI& location, const Progress& progress) {
    const std::u16string path = locationText(location, isIRI_);
    trace(severity::workingValue, [&](auto& record) { record << "VFS path: " << path; });
    if (isIRI_) {
        progress.recordFailure(KORVEX::virtualfilesystem::permissionDenied(path));
    } else {
        progress.recordFailure(KORVEX::FileManip::ReadOnly(path));
    }
}

bool RemoveDir::recoverFromFolderFailure(const vfs::Exception& failure, FolderRemoval& removal,
                                         const Progress& progress) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const vfs::ErrorCode code = failure.getErrorCode();
    // Without a handle it is not known what was to be removed: the link could not be followed.
    const bool isLeftover = removal.folder && (code == vfs::folderNotEmpty || code == vfs::ioError);
    if (isLeftover && recursive_) {
        trace(severity::workingValue, "Recursively removing folder.");
        try {
            return doFolderRemovalRecursive(std::move(removal.folder), removal.location,
                                            progress.somethingFailed);
        } catch (const vfs::Exception& lastFailure) {
            progress.reportItemError(lastFailure, isIRI_);
        }
        return removal.result;
    }
    const bool isGone = code == vfs::resourceNotFound && removal.result;
    if (!isGone) progress.reportItemError(failure, isIRI_);
    return removal.result;
}

bool RemoveDir::doFolderRemovalRecursive(std::unique_ptr<Folder> folder, const AbsoluteIRI& location,
                                         bool& somethingFailed) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    trace(severity::flowOfControl, "Recursively removing folder");
    folder->removeFolder(vfs::RemoveWithContents);
    trace(severity::flowOfControl, "Recursively removing rootFolder and all subfolders from KORVEX path");
    removeFolderTreeFromPath(location, true);
    // What failed before is gone now; on purpose this forgets the failures of other folders, too.
    somethingFailed = false;
    return true;
}

}  // namespace korvex::filemanip
