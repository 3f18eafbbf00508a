// The removal of items, one by one: files, folders, and what folders hold. A failure ends its own item only.
#include <algorithm>
#include <iterator>

#include "io/filesystem/filemanip/CopyMoveFiles_package_notice.h"
#include "io/filesystem/filemanip/DirManip.h"
#include "io/filesystem/filemanip/DirManip_search_path.h"
#include "io/filesystem/filemanip/command_frame_path_intake.h"
#include "io/filesystem/filemanip/command_frame_trace.h"
#include "platform/kx.h"
#include "platform/message_identifiers.h"

namespace korvex::filemanip {

namespace core = korvex::io::filesystem::core;
namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using resource_core::BaseMsgID;
using Velquist::KorvexStorageSystem;
using vfs::AbsoluteIRI;

namespace {

/// A tree may be deeper than the stack: what lies below so many levels goes in one operation of the storage,
/// for which no depth is too much.
constexpr std::size_t deepestWalk = 500;

/// A folder is among those that are walked for as long as its contents are being removed.
class WalkScope {
public:
    WalkScope(std::vector<AbsoluteIRI>& walked, const AbsoluteIRI& folder) : walked_(walked) {
        walked_.push_back(folder);
    }
    ~WalkScope() { walked_.pop_back(); }
    WalkScope(const WalkScope&) = delete;
    WalkScope& operator=(const WalkScope&) = delete;

private:
    std::vector<AbsoluteIRI>& walked_;
};

/// What could not be removed, as far as the text of limited length takes it in.
void recordFailure(const BaseMsgID& message, std::u16string& failedList, bool& limitReached,
                   bool& somethingFailed) {
    if (!limitReached) limitReached = core::Status::AppendWithLimit(failedList, message);
    somethingFailed = true;
}

template <class Message>
BaseMsgID messageOfPath(const std::u16string& path) {
    return Message(path);
}

/// The failures of an item on a local path that are told.
struct LocalFailure {
    vfs::ErrorCode code;
    BaseMsgID (*message)(const std::u16string& path);
};

constexpr LocalFailure localFailures[] = {
    {vfs::folderNotEmpty, messageOfPath<KORVEX::FileManip::CouldNotRemove>},
    {vfs::ioError, messageOfPath<KORVEX::FileManip::CouldNotRemove>},
    {vfs::permissionDenied, messageOfPath<KORVEX::FileManip::ReadOnly>},
    {vfs::readOnlyProvider, messageOfPath<KORVEX::FileManip::ReadOnly>},
};

void reportItemError(const vfs::Exception& failure, bool isIRI, std::u16string& failedList,
                     bool& limitReached, bool& somethingFailed) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const std::u16string path = locationText(failure.getLocation(), isIRI);
    if (isIRI) {
        const BaseMsgID message = vfs::messageOf(failure.getErrorCode(), path);
        recordFailure(message, failedList, limitReached, somethingFailed);
        return;
    }
    const auto known = std::find_if(std::begin(localFailures), std::end(localFailures),
                                    [&](const auto& row) { return row.code == failure.getErrorCode(); });
    // On purpose every other failure on a local path is dropped, and does not even count as one.
    if (known == std::end(localFailures)) return;
    recordFailure(known->message(path), failedList, limitReached, somethingFailed);
}

/// What cannot be made writable may go all the same.
template <class Handle>
void makeWritable(const Handle& item) {
    try {
        item.setWritable(true);
    } catch (const vfs::Exception&) {
        traceCurrentException();
    }
}

void warnOfPackage(const vfs::File& file) {
    const auto notice = noticeFileInPackage(file, PackageNoticeMode::fromPackage);
    if (!notice) return;
    kxWarningMsgId(KORVEX::RMDIR::RemovedFileFromPackage(notice->itemText, notice->packageName));
}

void warnOfPackage(const vfs::Folder& folder) {
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
std::unique_ptr<vfs::Folder> folderAt(const AbsoluteIRI& location, bool resolveLinks) {
    const vfs::StorageSystemReference storage = KorvexStorageSystem::GetStorageSystemReference();
    auto folder = std::make_unique<vfs::Folder>(location, storage);
    if (!resolveLinks) return folder;
    return std::make_unique<vfs::Folder>(folder->getCanonicalLocation(), storage);
}

}  // namespace

bool RemoveDir::removeMultipleItems(const Folder& parent, bool topLevel, std::u16string& failedList,
                                    bool& limitReached, bool& somethingFailed,
                                    std::vector<AbsoluteIRI>& removedFolders,
                                    const std::optional<AbsoluteIRI>& target,
                                    const std::u16string& strOriginalPath) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    const auto listing = parent.listAll(target ? target->getName() : std::u16string());
    if (target && listing.empty()) {
        trace(severity::flowOfControl, "Not a directory; folder contents and resources not found.");
        reportMissingItem(*target, strOriginalPath);
        return false;
    }
    bool removedAny = false;
    for (const vfs::ListEntry& entry : listing) {
        const vfs::Item& fileOrFolder = entry.getFileOrFolder();
        const bool isFile = boost::get<vfs::File>(&fileOrFolder) != nullptr;
        trace(severity::flowOfControl, [&](auto& record) {
            record << "Value of fileOrFolder: " << fileOrFolder << ", isFile? " << isFile;
        });
        bool removed = false;
        if (isFile) {
            // A link to a file counts as a file: storage is not asked.
            removed = doFileRemoval(provider::ExtendedFile, entry.getLocation(), topLevel, failedList,
                                    limitReached, somethingFailed);
        } else {
            const ExistenceTypeExtended type = core::getExtendedExistenceType(entry.getLocation(), true);
            removed = doFolderRemoval(type, entry.getLocation(), topLevel, failedList, limitReached,
                                      somethingFailed, removedFolders);
            trace(severity::rawValue,
                  [&](auto& record) { record << "Value of tempFilesRemoved: " << removed; });
        }
        removedAny = removedAny || removed;
    }
    return removedAny;
}

bool RemoveDir::doFileRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                              std::u16string& failedList, bool& limitReached, bool& somethingFailed) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    if (topLevel) {
        // Whatever is no folder stays when it is the user who named or matched it.
        recordFailure(KORVEX::FileManip::NotADirectory(locationText(location, isIRI_)), failedList,
                      limitReached, somethingFailed);
        return false;
    }
    bool removed = false;
    try {
        const vfs::StorageSystemReference storage = KorvexStorageSystem::GetStorageSystemReference();
        vfs::File file(location, storage);
        if (resolveLinks_) file = vfs::File(file.getCanonicalLocation(), storage);
        trace(severity::flowOfControl, [&](auto& record) { record << "value of fileObject: " << file; });
        if (type != provider::ExtendedBrokenLink) {
            trace(severity::flowOfControl, "Setting fileObject writable to True");
            makeWritable(file);
        }
        warnOfPackage(file);
        file.removeFile();
        removed = true;
        clearKFunction(location);
    } catch (const vfs::Exception& failure) {
        reportItemError(failure, isIRI_, failedList, limitReached, somethingFailed);
    }
    return removed;
}

bool RemoveDir::doFolderRemoval(const ExistenceTypeExtended& type, const AbsoluteIRI& location, bool topLevel,
                                std::u16string& failedList, bool& limitReached, bool& somethingFailed,
                                std::vector<AbsoluteIRI>& removedFolders) {
    const TraceScope scope(traceLogger(), KORVEX_FUNCTION_SIGNATURE, dirManipSourceFile, __LINE__);
    bool result = false;
    std::unique_ptr<Folder> folder;
    try {
        folder = folderAt(location, resolveLinks_);
        const bool isLink = type == provider::ExtendedLinkToFolder && !resolveLinks_;
        if (recursive_ && !isLink) {
            if (isWalked(folder->getLocation())) return result;
            if (walked_.size() == deepestWalk) {
                return doFolderRemovalRecursive(std::move(folder), location, somethingFailed);
            }
            const WalkScope walk(walked_, folder->getLocation());
            trace(severity::flowOfControl, "Recursively trying to remove multiple items.");
            result = removeMultipleItems(*folder, false, failedList, limitReached, somethingFailed,
                                         removedFolders, std::nullopt, std::u16string());
            trace(severity::flowOfControl, "Setting vfsFolder writable to True.");
            makeWritable(*folder);
        }
        if (!recursive_ && !folder->getAttributes().isWritable()) {
            recordReadOnlyFolder(location, failedList, limitReached, somethingFailed);
            return result;
        }
        const bool isNamedLink = topLevel && isLink;
        if (isNamedLink) return result;
        warnOfPackage(*folder);
        folder->removeFolder(vfs::RemoveEmptyFolder);
        result = true;
        trace(severity::rawValue,
              [&](auto& record) { record << "folder Location: " << folder->getLocation(); });
        if (!isLink && folder->getLocation().getScheme() == u"file") {
            updateWindowsPath(folder->getLocation());
            removedFolders.push_back(folder->getLocation());
        }
    } catch (const vfs::Exception& failure) {
        result = recoverFromFolderFailure(failure, result, std::move(folder), location, failedList,
                                          limitReached, somethingFailed);
    }
    return result;
}

bool RemoveDir::isWalked(const AbsoluteIRI& folder) const {
    return resolveLinks_ && std::find(walked_.begin(), walked_.end(), folder) != walked_.end();
}

void RemoveDir::recordReadOnlyFolder(const AbsoluteIRI& location, std::u16string& failedList,
                                     bool& limitReached, bool& somethingFailed) {
    const std::u16string path = locationText(location, isIRI_);
    trace(severity::workingValue, [&](auto& record) { record << "VFS path: " << path; });
    const BaseMsgID message = isIRI_ ? messageOfPath<KORVEX::virtualfilesystem::permissionDenied>(path)
                                     : messageOfPath<KORVEX::FileManip::ReadOnly>(path);
    recordFailure(message, failedList, limitReached, somethingFailed);
}

bool RemoveDir::recoverFromFolderFailure(const vfs::Exception& failure, bool removedBefore,
                                         std::unique_ptr<Folder> folder, const AbsoluteIRI& location,
                                         std::u16string& failedList, bool& limitReached,
                                         bool& somethingFailed) {
    trace(severity::error, [&](auto& record) { record << failure.ToUstring(); });
    const vfs::ErrorCode code = failure.getErrorCode();
    // Without a handle it is not known what was to be removed: the link could not be followed.
    const bool isLeftover = folder && (code == vfs::folderNotEmpty || code == vfs::ioError);
    if (isLeftover && recursive_) {
        trace(severity::workingValue, "Recursively removing folder.");
        try {
            return doFolderRemovalRecursive(std::move(folder), location, somethingFailed);
        } catch (const vfs::Exception& lastFailure) {
            reportItemError(lastFailure, isIRI_, failedList, limitReached, somethingFailed);
        }
        return removedBefore;
    }
    const bool isGone = code == vfs::resourceNotFound && removedBefore;
    if (!isGone) reportItemError(failure, isIRI_, failedList, limitReached, somethingFailed);
    return removedBefore;
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
